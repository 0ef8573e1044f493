#pragma once

#include <string>
#include <string_view>

namespace play {

/// Ignored at the beginning of a file.
inline constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

inline std::string_view WithoutTrailingBlanks(std::string_view line) {
    return line.substr(0, line.find_last_not_of(" \t") + 1);
}

/// Whether it is an ASCII control character other than the tab, which is text. `char` is unsigned
/// on some machines.
inline bool IsControl(char byte) {
    return (static_cast<unsigned char>(byte) < ' ' && byte != '\t') || byte == '\x7f';
}

/// Quotes a text for a message, without its trailing blanks.
inline std::string Quoted(std::string_view text) {
    return "\"" + std::string(WithoutTrailingBlanks(text)) + "\"";
}

}  // namespace play
