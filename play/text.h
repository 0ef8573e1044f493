#pragma once

#include <string>
#include <string_view>

namespace play {

inline std::string_view WithoutTrailingBlanks(std::string_view line) {
    return line.substr(0, line.find_last_not_of(" \t") + 1);
}

/// For messages.
inline std::string Quoted(std::string_view text) {
    return "\"" + std::string(WithoutTrailingBlanks(text)) + "\"";
}

}  // namespace play
