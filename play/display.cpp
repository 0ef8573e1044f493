#include "play/display.h"

#include "play/prompt.h"
#include "play/text.h"

#include <algorithm>
#include <utility>

namespace play {
namespace {

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

}  // namespace

void Display::Feed(std::string_view bytes) {
    for (const char byte : bytes) {
        FeedByte(byte);
    }
    SeparatePrompt();
}

void Display::FeedByte(char byte) {
    if (state_ == State::kEscape) {
        state_ = byte == '[' ? State::kSequence : State::kText;
    } else if (state_ == State::kSequence) {
        if (byte >= '@' && byte <= '~') {
            EndSequence(byte);
        }
    } else if (byte == '\x1b') {
        state_ = State::kEscape;
    } else {
        FeedText(byte);
    }
}

void Display::FeedText(char byte) {
    if (byte == '\n') {
        FinishLine();
    } else if (byte == '\r') {
        column_ = 0;
    } else if (byte == '\b') {
        MoveLeft();
    } else if (!IsControl(byte)) {
        Put(byte);
    }
}

void Display::MoveLeft() {
    while (column_ > 0 && ContinuesCharacter(line_[--column_])) {
    }
}

// The first byte of a character replaces the character at the cursor; further bytes are inserted.
void Display::Put(char byte) {
    std::size_t end = column_;
    if (!ContinuesCharacter(byte) && end < line_.size()) {
        do {
            ++end;
        } while (end < line_.size() && ContinuesCharacter(line_[end]));
    }
    line_.replace(column_, end - column_, 1, byte);
    ++column_;
}

void Display::EndSequence(char final) {
    state_ = State::kText;
    if (final == 'K') {
        line_.resize(column_);
    }
}

void Display::FinishLine() {
    const std::string line = std::exchange(line_, "");
    column_ = 0;
    if (const std::size_t length = PromptLength(line); length > 0) {
        FinishPrompt(line, length);
    } else {
        lines_.push_back({line, ""});
    }
}

// Either the line was answered, or something was printed after the prompt: because the prompt was
// drawn too early, or by a notification.
// NOLINTNEXTLINE(misc-no-recursion): as above
void Display::FinishPrompt(std::string_view line, std::size_t length) {
    const std::string_view rest = line.substr(length);
    const std::string prompt(line.substr(0, length));
    if (is_answered_ && (!echo_ || rest == *echo_)) {
        lines_.push_back(
            {std::string(rest), IsRedrawn(prompt, first_drawn_) ? first_drawn_ : prompt});
        is_answered_ = false;
        first_drawn_.clear();
        half_typed_.clear();
        return;
    }
    if (!IsRedrawn(prompt, first_drawn_)) {
        first_drawn_ = prompt;
    }
    if (const std::size_t next = PromptLength(rest); next > 0) {
        // NOLINTNEXTLINE(misc-no-recursion): each call has a shorter line
        FinishPrompt(rest, next);
    } else if (!rest.empty() && half_typed_.find(rest) == std::string::npos) {
        lines_.push_back({std::string(rest), ""});
    }
}

// In a session file a prompt is on its own line, even if it follows text without a newline.
void Display::SeparatePrompt() {
    const std::size_t begin = FindLastPrompt(line_);
    if (begin == std::string::npos || begin == 0) {
        return;
    }
    const std::string line = line_.substr(0, begin);
    line_.erase(0, begin);
    column_ = line_.size();
    if (const std::size_t length = PromptLength(line); length > 0) {
        FinishPrompt(line, length);
    } else {
        lines_.push_back({line, ""});
    }
}

std::vector<DisplayedLine> Display::TakeLines() {
    return std::exchange(lines_, {});
}

std::string Display::Prompt() const {
    if (is_answered_ || line_.empty() || PromptLength(line_) != line_.size()) {
        return "";
    }
    return IsRedrawn(line_, first_drawn_) ? first_drawn_ : line_;
}

bool Display::IsAnswerUnfinished() const {
    const std::size_t length = PromptLength(line_);
    return is_answered_ && length > 0 && echo_ &&
           echo_->compare(0, line_.size() - length, line_, length) == 0;
}

void Display::ExpectEcho(std::optional<std::string> echo, bool ends_line) {
    is_answered_ = true;
    echo_ = std::move(echo);
    if (!ends_line && echo_ && echo_->empty()) {
        FinishLine();
    }
}

void Display::End() {
    if (!line_.empty()) {
        FinishLine();
    }
}

}  // namespace play
