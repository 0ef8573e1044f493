#include "fuzz/fuzz.h"

#include "support/messages.h"

#include <glib.h>

#include <cstdio>
#include <cstdlib>

// GLib's complaints are findings, and no bus may be met by chance.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    g_log_set_always_fatal(
        static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    morvane_fuzz::Check(morvane_fuzz::Input(std::string(data, data + size)));
    return 0;
}

namespace morvane_fuzz {

unsigned char Input::Byte() {
    return IsEmpty() ? 0 : static_cast<unsigned char>(bytes_[position_++]);
}

std::string Input::Until(char end) {
    const std::size_t found = bytes_.find(end, position_);
    if (found == std::string::npos) return Rest();
    const std::string text = bytes_.substr(position_, found - position_);
    position_ = found + 1;
    return text;
}

std::string Input::Rest() {
    const std::string rest = bytes_.substr(position_);
    position_ = bytes_.size();
    return rest;
}

void Require(bool holds, const char* what, const std::string& details) {
    if (holds) return;
    std::fprintf(stderr, "Does not hold: %s\n%s\n", what, details.c_str());
    std::abort();
}

std::string Message(const std::string& text) {
    return morvane_test::Normal(text.substr(0, 999));
}

namespace {

/// The first byte of a character and the bounds of its second byte; the others are 80 to BF.
struct Lead {
    unsigned char first, last;
    std::size_t length;
    unsigned char second_first, second_last;
};

constexpr Lead kLeads[] = {
    {0x01, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

unsigned char At(const std::string& text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

bool Continues(const Lead& lead, unsigned char byte, std::size_t index) {
    return index == 1 ? byte >= lead.second_first && byte <= lead.second_last
                      : byte >= 0x80 && byte <= 0xBF;
}

}  // namespace

std::size_t CharacterLength(const std::string& text, std::size_t position, bool& cut) {
    cut = false;
    for (const Lead& lead : kLeads) {
        if (At(text, position) < lead.first || At(text, position) > lead.last) continue;
        for (std::size_t i = 1; i < lead.length; ++i) {
            cut = position + i == text.size();
            if (cut || !Continues(lead, At(text, position + i), i)) return 0;
        }
        return lead.length;
    }
    return 0;
}

bool IsUtf8(const std::string& text) {
    bool cut = false;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharacterLength(text, i, cut);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

}  // namespace morvane_fuzz
