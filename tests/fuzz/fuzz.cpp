#include "fuzz/fuzz.h"

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

}  // namespace morvane_fuzz
