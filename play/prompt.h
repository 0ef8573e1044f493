#pragma once

#include <cstddef>
#include <string_view>

namespace play {

/// The length of the tool's prompt at the beginning of `line`, such as "Vantor/User Id ? ", or 0 if
/// none is there.
std::size_t PromptLength(std::string_view line);

/// Where the prompt begins with which `line` ends; npos if it does not end with one.
std::size_t FindLastPrompt(std::string_view line);

/// The tool redraws the prompt of a value with the marker of a menu beneath a notification.
bool IsRedrawn(std::string_view prompt, std::string_view original);

}  // namespace play
