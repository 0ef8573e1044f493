#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace play {

/// What is typed at a prompt.
struct Answer {
    /// Offsets of a key with which the terminal discards the echo that was not yet read.
    struct Flush {
        std::size_t keys;
        std::size_t echo;
    };

    std::string keys;  ///< ends with a newline, unless the last key takes effect without one
    std::string echo;  ///< what the terminal displays for them, without the newline
    std::vector<Flush> flushes = {};  ///< in this order; not of the first key
};

/// Reads an answer as a session file has it behind a prompt: "^C" is a key, "^V^C" the character of
/// that key as text; a backslash makes the character behind it ordinary and is nothing at the end.
/// Throws std::invalid_argument with the reason.
Answer ParseAnswer(std::string_view written);

/// The answer that types this text and Enter.
std::string WriteAnswer(std::string_view text);

}  // namespace play
