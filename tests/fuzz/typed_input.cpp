#include "fuzz/typed_input.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

namespace morvane_fuzz {

using morvane_test::Checked;

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
