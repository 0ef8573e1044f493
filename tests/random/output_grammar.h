#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane_test {

/// What the tool's output is made of.
struct OutputReading {
    struct Prompt {
        std::string segment;
        bool asks_value;  ///< " ? " instead of " > "
    };

    std::vector<std::string> messages;  ///< texts without colours, prompts left out
    std::vector<Prompt> prompts;        ///< as drawn for an input; not those drawn again
    std::optional<std::string> mistake;
};

/// Reads the output of a tool that wrote to pipes or to a terminal without echo. It is a sequence
/// of messages (a colour, a text without escape sequences of at most 999 bytes, the reset),
/// prompts, and messages beneath a standing prompt, which is drawn again after each. Anything else
/// is a mistake. `cut` allows the output to end anywhere, as when the tool was killed. A terminal
/// throws away what it holds when Ctrl-C is typed: at one place at or after `gap` something may be
/// missing.
OutputReading ReadOutput(std::string_view output, bool cut, std::optional<std::size_t> gap = {});

}  // namespace morvane_test
