#include "fuzz/fuzz.h"

#include <fcntl.h>
#include <glib.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

// Warnings of GLib end the process. The address prevents the use of a real bus.
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

using morvane_test::Checked;

unsigned char Input::Byte() {
    return position_ == bytes_.size() ? 0 : static_cast<unsigned char>(bytes_[position_++]);
}

std::string Input::Line() {
    const std::size_t end = std::min(bytes_.find('\n', position_), bytes_.size());
    const std::string line = bytes_.substr(position_, end - position_);
    position_ = std::min(end + 1, bytes_.size());
    return line;
}

std::string Input::Rest() {
    const std::string rest = bytes_.substr(position_);
    position_ = bytes_.size();
    return rest;
}

void Require(bool holds, const char* what, const std::string& details) {
    if (holds) return;
    std::fprintf(stderr, "Requirement violated: %s\n%s\n", what, details.c_str());
    std::abort();
}

TypedInput::TypedInput(const std::string& text)
    : memory_(Checked(memfd_create("input", MFD_CLOEXEC), "memfd_create")),
      terminal_(Checked(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0), "dup")) {
    Checked(static_cast<int>(write(memory_.Number(), text.data(), text.size())), "write");
    Checked(static_cast<int>(lseek(memory_.Number(), 0, SEEK_SET)), "lseek");
    Checked(dup2(memory_.Number(), STDIN_FILENO), "dup2");
}

TypedInput::~TypedInput() {
    __fpurge(stdin);
    std::clearerr(stdin);
    dup2(terminal_.Number(), STDIN_FILENO);
}

}  // namespace morvane_fuzz
