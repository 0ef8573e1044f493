#include "support/captured_output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

namespace morvane_test {

CapturedOutput::CapturedOutput()
    : memory_(Checked(memfd_create("output", MFD_CLOEXEC), "memfd_create")),
      terminal_(Checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "dup")) {
    std::fflush(stdout);
    Checked(dup2(memory_.Number(), STDOUT_FILENO), "dup2");
}

CapturedOutput::~CapturedOutput() {
    std::fflush(stdout);
    dup2(terminal_.Number(), STDOUT_FILENO);
}

std::string CapturedOutput::Text() const {
    std::fflush(stdout);
    const auto size = static_cast<std::size_t>(
        Checked(static_cast<int>(lseek(memory_.Number(), 0, SEEK_END)), "lseek"));
    std::string text(size, '\0');
    Checked(static_cast<int>(pread(memory_.Number(), text.data(), size, 0)), "pread");
    return text;
}

std::string Printed(const std::function<void()>& action) {
    const CapturedOutput output;
    action();
    return output.Text();
}

}  // namespace morvane_test
