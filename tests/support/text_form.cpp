#include "support/text_form.h"

#include "interfaces/glib_ptr.h"

#include <algorithm>
#include <regex>

namespace morvane_test {
namespace {

std::string EscapedByte(char byte) {
    if (byte == '\n') return "\\n\n";
    if (byte == '\x1b') return "\\e";
    if (byte == '\r') return "\\r";
    if (byte == '\t') return "\\t";
    if (byte == '\\') return "\\\\";
    if (g_ascii_isprint(byte)) return {byte};
    return morvane::TextPtr(g_strdup_printf("\\x%02x", static_cast<unsigned char>(byte))).get();
}

}  // namespace

std::string Escaped(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) text += EscapedByte(byte);
    return text;
}

std::string AsSeen(std::string_view bytes) {
    static const std::regex unseen("\x1b\\[[0-9;]*m|[^\n]*\r\x1b\\[K");
    std::string text = std::regex_replace(std::string(bytes), unseen, "");
    const auto is_control = [](char byte) {
        return g_ascii_iscntrl(byte) && byte != '\n' && byte != '\t';
    };
    text.erase(std::remove_if(text.begin(), text.end(), is_control), text.end());
    return text;
}

}  // namespace morvane_test
