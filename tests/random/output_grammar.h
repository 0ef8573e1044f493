#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane_test {

/// Result of parsing the tool's output.
struct OutputReading {
    std::vector<std::string> messages;  ///< texts without colours and prompts
    std::optional<std::string> mistake;
};

/// Parses the output of a tool that wrote to pipes or to a terminal without echo: a sequence of
/// messages (a colour, a text of at most 999 bytes without escape sequences, a reset), prompts, and
/// messages printed while a prompt is displayed, which is then redrawn. Anything else is a mistake.
/// `truncated` allows the output to end anywhere, as when the tool was killed. A terminal discards
/// its buffer when Ctrl-C is typed: output may be missing once at or after offset `gap`.
OutputReading ReadOutput(std::string_view output, bool truncated,
                         std::optional<std::size_t> gap = {});

}  // namespace morvane_test
