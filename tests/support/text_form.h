#pragma once

#include <string>
#include <string_view>

namespace morvane_test {

/// Escapes `bytes` as in a C string literal and adds a line break after each \n.
std::string Escaped(std::string_view bytes);

/// The text as a terminal displays it, without colours.
std::string AsSeen(std::string_view bytes);

}  // namespace morvane_test
