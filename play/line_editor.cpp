#include "play/line_editor.h"

#include <unistd.h>

namespace play {

bool LineEditor::Is(char byte, int which) const {
    const cc_t key = modes_.c_cc[which];
    return key != _POSIX_VDISABLE && static_cast<cc_t>(byte) == key;
}

LineEditor::Key LineEditor::Classify(char byte) const {
    if (is_literal_) {
        return Key::kText;
    }
    if (byte == '\n' || byte == '\r') {
        return Key::kEnter;
    }
    if (Is(byte, VEOF)) {
        return Key::kEndOfInput;
    }
    if (Is(byte, VINTR) || Is(byte, VQUIT)) {
        return Key::kInterrupt;
    }
    if (Is(byte, VREPRINT)) {
        return Key::kReprint;
    }
    return Is(byte, VSUSP) ? Key::kSuspend : Key::kText;
}

void LineEditor::Add(char byte) {
    if (is_literal_) {
        is_literal_ = false;
        line_ += byte;
    } else if (Is(byte, VLNEXT)) {
        is_literal_ = true;
    } else if (Is(byte, VERASE)) {
        EraseCharacter();
    } else if (Is(byte, VKILL)) {
        line_.clear();
    } else if (Is(byte, VWERASE)) {
        EraseWord();
    } else if (!IsFlowControl(byte)) {
        line_ += byte;
    }
}

bool LineEditor::IsFlowControl(char byte) const {
    return (modes_.c_iflag & IXON) != 0 && (Is(byte, VSTART) || Is(byte, VSTOP));
}

void LineEditor::EraseCharacter() {
    const bool utf8 = (modes_.c_iflag & IUTF8) != 0;
    while (utf8 && !line_.empty() && (static_cast<unsigned char>(line_.back()) & 0xc0U) == 0x80U) {
        line_.pop_back();
    }
    if (!line_.empty()) {
        line_.pop_back();
    }
}

void LineEditor::EraseWord() {
    while (!line_.empty() && line_.back() == ' ') {
        line_.pop_back();
    }
    while (!line_.empty() && line_.back() != ' ') {
        line_.pop_back();
    }
}

}  // namespace play
