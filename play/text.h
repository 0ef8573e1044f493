#pragma once

#include <string>
#include <string_view>

namespace play {

/// At the beginning of a file it is ignored.
inline constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

inline std::string_view WithoutTrailingBlanks(std::string_view line) {
    return line.substr(0, line.find_last_not_of(" \t") + 1);
}

/// Of ASCII, without the tab, which is text. Plain char is unsigned on some machines.
inline bool IsControl(char byte) {
    return (static_cast<unsigned char>(byte) < ' ' && byte != '\t') || byte == '\x7f';
}

/// For messages.
inline std::string Quoted(std::string_view text) {
    return "\"" + std::string(WithoutTrailingBlanks(text)) + "\"";
}

}  // namespace play
