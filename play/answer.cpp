#include "play/answer.h"

#include <stdexcept>

namespace play {
namespace {

constexpr std::string_view kEndOfInput = "^D";
constexpr std::string_view kTypable = "CD[\\";  // of the keys that are written with a caret
constexpr std::string_view kWithoutEnter = "\x03\x04\x1c";
constexpr std::size_t kLongestLine = 4000;  // what a terminal takes, and some room

// Of a written answer: at a key such as "^C".
bool IsKey(std::string_view text) {
    return text.size() > 1 && text[0] == '^' && text[1] >= '@' && text[1] <= '_';
}

void AppendKey(Answer& answer, char letter) {
    if (kTypable.find(letter) == std::string_view::npos) {
        throw std::invalid_argument(std::string("the key ^") + letter +
                                    " cannot be typed; a caret is written \\^");
    }
    answer.keys += static_cast<char>(letter & 0x1f);
    answer.echo += {'^', letter};
}

}  // namespace

Answer ParseAnswer(std::string_view written) {
    if (written == kEndOfInput) {
        return {"\x04", ""};
    }
    Answer answer;
    for (std::size_t i = 0; i < written.size(); ++i) {
        const bool escaped = written[i] == '\\';
        if (!escaped && IsKey(written.substr(i))) {
            AppendKey(answer, written[++i]);
            continue;
        }
        if (escaped && ++i == written.size()) {
            break;
        }
        answer.keys += written[i];
        answer.echo += written[i];
    }
    if (answer.keys.find('\x04') != std::string::npos) {
        throw std::invalid_argument("^D must be the whole answer");
    }
    if (answer.keys.size() > kLongestLine) {
        throw std::invalid_argument("the answer is longer than a terminal takes");
    }
    if (answer.keys.empty() || kWithoutEnter.find(answer.keys.back()) == std::string_view::npos) {
        answer.keys += '\n';
    }
    return answer;
}

std::string WriteAnswer(std::string_view text) {
    std::string written;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' || IsKey(text.substr(i)) || (i == 0 && text[i] == ' ')) {
            written += '\\';
        }
        written += text[i];
    }
    const bool needs_end = text.empty() || text.back() == ' ' || text.back() == '\t';
    return needs_end ? written + '\\' : written;
}

}  // namespace play
