#include "support/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace morvane_test {
namespace {

constexpr char kControlD = 4;

// Keeps line mode, Ctrl-C and Ctrl-D.
void DisableEchoAndOutputProcessing(int terminal) {
    termios settings = {};
    Checked(tcgetattr(terminal, &settings), "tcgetattr");
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    Checked(tcsetattr(terminal, TCSANOW, &settings), "tcsetattr");
}

bool AwaitWritable(int descriptor, Duration limit) {
    pollfd wait = {descriptor, POLLOUT, 0};
    return poll(&wait, 1, static_cast<int>(limit.count())) > 0 && (wait.revents & POLLOUT) != 0;
}

}  // namespace

Terminal::Terminal(Wiring wiring) : wiring_(wiring) {
    IsTerminal() ? MakeTerminal() : MakePipes();
    for (const int descriptor : {input_.Number(), Output()}) {
        const int flags = Checked(fcntl(descriptor, F_GETFL), "fcntl");
        Checked(fcntl(descriptor, F_SETFL, flags | O_NONBLOCK), "fcntl");
    }
}

void Terminal::MakePipes() {
    Pipe in = MakePipe();
    Pipe out = MakePipe();
    input_ = std::move(in.writer);
    program_input_ = std::move(in.reader);
    output_ = std::move(out.reader);
    program_output_ = std::move(out.writer);
}

void Terminal::MakeTerminal() {
    int test_end = -1;
    int program_end = -1;
    Checked(openpty(&test_end, &program_end, nullptr, nullptr, nullptr), "openpty");
    input_ = FileDescriptor(test_end);
    program_input_ = FileDescriptor(program_end);
    for (const int descriptor : {test_end, program_end})
        Checked(fcntl(descriptor, F_SETFD, FD_CLOEXEC), "fcntl");
    if (!IsInteractive()) DisableEchoAndOutputProcessing(program_end);
}

int Terminal::ProgramOutput() const {
    return IsTerminal() ? program_input_.Number() : program_output_.Number();
}

void Terminal::ReleaseProgramEnds() {
    program_input_.Close();
    program_output_.Close();
}

int Terminal::Output() const {
    return IsTerminal() ? input_.Number() : output_.Number();
}

bool Terminal::Write(std::string_view bytes, Duration limit) {
    while (!bytes.empty()) {
        if (!AwaitWritable(input_.Number(), limit)) return false;
        const ssize_t count = write(input_.Number(), bytes.data(), bytes.size());
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool Terminal::CloseInput() {
    if (IsTerminal()) return Write({&kControlD, 1}, Patience());
    input_.Close();
    return true;
}

void Terminal::HangUp() {
    input_.Close();
    output_.Close();
}

}  // namespace morvane_test
