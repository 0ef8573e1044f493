#pragma once

#include <string>

namespace morvane {

// D-Bus carries only valid UTF-8; a terminal may deliver any bytes.

/// For complete text. Replaces each byte that is not part of a valid UTF-8 character with '?',
/// so that the length does not change.
std::string ReplaceInvalidBytes(std::string text);

/// For text that may have been truncated: the same, but drops an incomplete last character.
std::string BusText(std::string text);

}  // namespace morvane
