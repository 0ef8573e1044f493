#pragma once

#include <optional>
#include <string_view>

namespace morvane {

/// The number at the beginning of `text`, by the rules by which a standard stream extracts an
/// unsigned int: skips leading blanks and a sign, wraps "-1" around, ignores what follows the
/// digits. Empty on overflow or without digits. `base` is 10 or 16; 16 allows "0x".
///
/// Streams are avoided because their locales would take as much memory as all of the tool's code.
[[nodiscard]] std::optional<unsigned int> ParseNumber(std::string_view text, int base);

/// `text` without leading white space as in the "C" locale.
[[nodiscard]] std::string_view SkipBlanks(std::string_view text);

}  // namespace morvane
