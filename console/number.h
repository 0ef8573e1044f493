#pragma once

#include <optional>
#include <string_view>

namespace morvane {

/// The number at the beginning of `text`, by the rules by which a standard stream extracts an
/// unsigned int: leading blanks and a sign are passed over, "-1" wraps round, what follows the
/// digits is ignored, and what does not fit is nothing. `base` is 10 or 16; 16 allows "0x".
///
/// Not a stream, whose locales would cost the tool as much memory as all of its own code.
[[nodiscard]] std::optional<unsigned int> ParseNumber(std::string_view text, int base);

/// `text` without its leading blanks, which are those of the "C" locale.
[[nodiscard]] std::string_view SkipBlanks(std::string_view text);

}  // namespace morvane
