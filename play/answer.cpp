#include "play/answer.h"

#include "play/text.h"

#include <stdexcept>
#include <utility>

namespace play {
namespace {

constexpr std::string_view kEndOfInput = "^D";
// Control keys that a terminal with default settings does not pass on as typed: line editing, flow
// control and line ends. Also the tab, which is text.
constexpr std::string_view kUntypable = "IJMQRSUVWZ?";
constexpr std::string_view kActing = "CD\\";
constexpr char kLiteralKey = 'V';           // the next key is text
constexpr std::size_t kLongestLine = 4000;  // a terminal accepts 4095

bool Contains(std::string_view letters, char letter) {
    return letters.find(letter) != std::string_view::npos;
}

// Whether the rest of a written answer begins with a key such as "^C".
bool IsKey(std::string_view text) {
    return text.size() > 1 && text[0] == '^' && text[1] >= '?' && text[1] <= '_';
}

char ByteOf(char letter) {
    return letter == '?' ? '\x7f' : static_cast<char>(letter & 0x1f);
}

std::string WriteControl(char byte) {
    const char letter = byte == '\x7f' ? '?' : static_cast<char>(byte | 0x40);
    const bool is_plain = !Contains(kUntypable, letter) && !Contains(kActing, letter);
    return (is_plain ? "^" : "^V^") + std::string(1, letter);
}

// Whether the rest of a text would be read as a key, once its control characters are written.
bool LooksLikeKey(std::string_view text) {
    return IsKey(text) || (text.size() > 1 && text[0] == '^' && IsControl(text[1]));
}

/// Reads an answer from its beginning to its end.
class AnswerReader {
  public:
    explicit AnswerReader(std::string_view written) : written_(written) {}

    Answer Read() {
        while (!written_.empty()) {
            if (IsKey(written_)) {
                ReadKey();
            } else if (written_.front() == '\\') {
                written_.remove_prefix(1);
                ReadText();
            } else {
                ReadText();
            }
        }
        if (!acts_) {
            answer_.keys += '\n';
        }
        return std::move(answer_);
    }

  private:
    // Call it before each key. Whether the key takes effect without Enter.
    void BeginKey(bool acts) {
        const bool follows_signal = std::exchange(acts_, acts);
        if (follows_signal || (acts && !answer_.keys.empty())) {
            answer_.pauses.push_back({answer_.keys.size(), answer_.echo.size(), follows_signal});
        }
    }

    void ReadText() {
        BeginKey(false);
        if (!written_.empty()) {
            answer_.keys += written_.front();
            answer_.echo += written_.front();
            written_.remove_prefix(1);
        }
    }

    void ReadKey() {
        const bool is_literal = written_[1] == kLiteralKey && IsKey(written_.substr(2));
        const char letter = written_[is_literal ? 3 : 1];
        if (!is_literal && Contains(kUntypable, letter)) {
            throw std::invalid_argument(std::string("the key ^") + letter +
                                        " cannot be typed; a caret is written \\^");
        }
        if (!is_literal && letter == 'D') {
            throw std::invalid_argument("^D must be the whole answer");
        }
        BeginKey(!is_literal && Contains(kActing, letter));
        if (is_literal) {
            answer_.keys += ByteOf(kLiteralKey);
        }
        answer_.keys += ByteOf(letter);
        answer_.echo += {'^', letter};
        written_.remove_prefix(is_literal ? 4 : 2);
    }

    std::string_view written_;
    Answer answer_;
    bool acts_ = false;  // the last key takes effect without Enter
};

}  // namespace

Answer ParseAnswer(std::string_view written) {
    if (written == kEndOfInput) {
        return {"\x04", ""};
    }
    Answer answer = AnswerReader(written).Read();
    if (answer.keys.size() > kLongestLine + 1) {
        throw std::invalid_argument("the answer is longer than a terminal takes");
    }
    return answer;
}

std::string WriteAnswer(std::string_view text) {
    std::string written;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsControl(text[i])) {
            written += WriteControl(text[i]);
            continue;
        }
        if (text[i] == '\\' || LooksLikeKey(text.substr(i)) || (i == 0 && text[i] == ' ')) {
            written += '\\';
        }
        written += text[i];
    }
    const bool needs_end = text.empty() || text.back() == ' ' || text.back() == '\t';
    return needs_end ? written + '\\' : written;
}

}  // namespace play
