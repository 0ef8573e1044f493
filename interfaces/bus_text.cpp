#include "interfaces/bus_text.h"

#include <glib.h>

#include <utility>

namespace morvane {
namespace {

// Offset of the first invalid UTF-8 byte at or after `from`.
std::size_t FindInvalid(const std::string& text, std::size_t from) {
    const gchar* end = nullptr;
    g_utf8_validate(text.data() + from, static_cast<gssize>(text.size() - from), &end);
    return static_cast<std::size_t>(end - text.data());
}

// Whether the bytes from `position` on are the beginning of one valid character. After some first
// bytes only one of these two second bytes is valid.
bool IsCutOff(const std::string& text, std::size_t position) {
    constexpr std::size_t kLongestCharacter = 4;
    for (const char continuation : {'\x80', '\xBF'}) {
        std::string character = text.substr(position, kLongestCharacter);
        while (character.size() < kLongestCharacter) {
            character += continuation;
            if (FindInvalid(character, 0) == character.size()) {
                return true;
            }
        }
    }
    return false;
}

// The length changes only if a truncated last character is dropped.
std::string MakeValid(std::string text, bool may_be_cut) {
    for (std::size_t i = FindInvalid(text, 0); i < text.size(); i = FindInvalid(text, i)) {
        if (may_be_cut && IsCutOff(text, i)) {
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
