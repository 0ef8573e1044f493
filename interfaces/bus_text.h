#pragma once

#include <string>

namespace morvane {

// D-Bus carries valid UTF-8 only, and a terminal carries whatever was typed.

/// For text that was taken whole. Replaces each byte that is no part of a UTF-8 character by '?';
/// the length stays.
std::string ReplaceInvalidBytes(std::string text);

/// For text that a length limit may have cut. The same, but a last character that is incomplete is
/// dropped.
std::string BusText(std::string text);

}  // namespace morvane
