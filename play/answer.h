#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace play {

/// What is typed at a prompt.
struct Answer {
    /// Offsets at which typing pauses until the echo is displayed: with a key such as Ctrl-C the
    /// terminal discards the echo that has not been read yet.
    struct Pause {
        std::size_t keys;
        std::size_t echo;
        bool follows_signal;  ///< the program must also have handled the signal of the last key
    };

    std::string keys;  ///< ends with a newline, unless the last key takes effect without one
    std::string echo;  ///< what the terminal displays for `keys`, without the newline
    std::vector<Pause> pauses = {};  ///< in order
};

/// Parses the answer that follows a prompt in a session file. "^C" is a key, "^V^C" the character
/// of that key as text. A backslash makes the next character ordinary; at the end it is ignored.
/// Throws std::invalid_argument with the reason.
Answer ParseAnswer(std::string_view written);

/// The answer that types this text and Enter.
std::string WriteAnswer(std::string_view text);

}  // namespace play
