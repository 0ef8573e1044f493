#include "support/text_form.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <regex>

namespace morvane_test {
namespace {

std::string EscapedByte(char byte) {
    switch (byte) {
        case '\n':
            return "\\n\n";
        case '\x1b':
            return "\\e";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '\\':
            return "\\\\";
        default:
            break;
    }
    if (std::isprint(static_cast<unsigned char>(byte))) return {byte};
    std::array<char, 8> text = {};
    std::snprintf(text.data(), text.size(), "\\x%02x", static_cast<unsigned char>(byte));
    return text.data();
}

}  // namespace

std::string Escaped(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) text += EscapedByte(byte);
    return text;
}

std::string AsSeen(std::string_view bytes) {
    static const std::regex colours("\x1b\\[[0-9;]*m");
    static const std::regex erased_lines("[^\n]*\r\x1b\\[K");
    std::string text = std::regex_replace(std::string(bytes), colours, "");
    text = std::regex_replace(text, erased_lines, "");
    const auto is_unseen = [](char byte) {
        return std::iscntrl(static_cast<unsigned char>(byte)) && byte != '\n' && byte != '\t';
    };
    text.erase(std::remove_if(text.begin(), text.end(), is_unseen), text.end());
    return text;
}

}  // namespace morvane_test
