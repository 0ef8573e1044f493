#pragma once

#include <string>
#include <string_view>

namespace morvane_test {

/// Every byte made visible, as a C string literal would write it, with a line break after each \n.
std::string Escaped(std::string_view bytes);

/// What a person would read on the terminal, without the colours.
std::string AsSeen(std::string_view bytes);

}  // namespace morvane_test
