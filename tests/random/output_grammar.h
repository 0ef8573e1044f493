#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane_test {

/// What the tool's output consists of.
struct OutputReading {
    std::vector<std::string> messages;  ///< texts without colours, prompts left out
    std::optional<std::string> mistake;
};

/// Reads the output of a tool that wrote to pipes or to a terminal without echo. It is a sequence
/// of messages (a colour, a text without escape sequences of at most 999 bytes, the reset),
/// prompts, and messages below a prompt, which is drawn again after each. Anything else is a
/// mistake. `truncated` allows the output to end anywhere, as when the tool was killed. A terminal
/// discards its buffer when Ctrl-C is typed: at one place at or after `gap` output may be missing.
OutputReading ReadOutput(std::string_view output, bool truncated,
                         std::optional<std::size_t> gap = {});

}  // namespace morvane_test
