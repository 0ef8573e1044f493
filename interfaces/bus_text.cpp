#include "interfaces/bus_text.h"

#include <glib.h>

#include <utility>

namespace morvane {
namespace {

// What g_utf8_get_char_validated says of a character that the end of the text cuts off.
constexpr gunichar kIncomplete = static_cast<gunichar>(-2);

// Where the first byte at or after `from` stands that no valid character holds.
std::size_t FindInvalid(const std::string& text, std::size_t from) {
    const gchar* end = nullptr;
    g_utf8_validate(text.data() + from, static_cast<gssize>(text.size() - from), &end);
    return static_cast<std::size_t>(end - text.data());
}

bool IsCutOff(const std::string& text, std::size_t position) {
    return g_utf8_get_char_validated(text.data() + position,
                                     static_cast<gssize>(text.size() - position)) == kIncomplete;
}

// The length stays, unless the text may be cut and is.
std::string MakeValid(std::string text, bool may_be_cut) {
    for (std::size_t i = FindInvalid(text, 0); i < text.size(); i = FindInvalid(text, i)) {
        if (may_be_cut && text[i] != '\0' && IsCutOff(text, i)) {
            text.resize(i);
        } else {
            text[i] = '?';
        }
    }
    return text;
}

}  // namespace

std::string ReplaceInvalidBytes(std::string text) {
    return MakeValid(std::move(text), false);
}

std::string BusText(std::string text) {
    return MakeValid(std::move(text), true);
}

}  // namespace morvane
