#pragma once

#include <cstddef>
#include <string_view>

namespace play {

/// The length of the tool's prompt at the beginning of `line`, such as "Vantor/User Id ? ", or 0 if
/// there is none.
std::size_t PromptLength(std::string_view line);

/// Offset of the prompt at the end of `line`; npos if there is none.
std::size_t FindLastPrompt(std::string_view line);

/// The tool redraws the prompt of a value with the marker of a menu beneath a notification.
bool IsRedrawn(std::string_view prompt, std::string_view original);

}  // namespace play
