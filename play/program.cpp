#include "play/program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <system_error>
#include <tuple>
#include <utility>

namespace play {
namespace {

constexpr Duration kPatienceAtEnd(2000);  // after Ctrl-D, and after each signal

// Prepared before fork(): until exec() the child may call only async-signal-safe functions.
class Arguments {
  public:
    explicit Arguments(const std::vector<std::string>& command) : words_(command) {
        for (std::string& word : words_) {
            pointers_.push_back(word.data());
        }
        pointers_.push_back(nullptr);
    }

    [[noreturn]] void Execute(int report) const {
        execvp(pointers_.front(), pointers_.data());
        const int error = errno;
        std::ignore = write(report, &error, sizeof error);
        _exit(127);
    }

  private:
    std::vector<std::string> words_;
    std::vector<char*> pointers_;
};

struct Pipe {
    Pipe() {
        std::array<int, 2> ends = {};
        Checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
        reader = Descriptor(ends[0]);
        writer = Descriptor(ends[1]);
    }
    Descriptor reader;
    Descriptor writer;
};

// In the child: makes the terminal the controlling terminal of a new session, and the standard
// streams.
void TakeTerminal(int terminal) {
    setsid();
    ioctl(terminal, TIOCSCTTY, 0);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(terminal, stream);
    }
    if (terminal > STDERR_FILENO) {
        close(terminal);
    }
}

// exec() closes the other end of the pipe; if it fails, the child writes errno to it.
void CheckStart(Pipe& report, const std::string& name) {
    report.writer.Close();
    int error = 0;
    if (read(report.reader.Number(), &error, sizeof error) == sizeof error) {
        throw CannotRun("cannot run " + name + ": " + std::generic_category().message(error));
    }
}

}  // namespace

int Remaining(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<Duration>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

Program::Program(const std::vector<std::string>& command, const TerminalSettings& settings,
                 Signals& signals)
    : signals_(signals) {
    Start(command, settings);
}

void Program::Start(const std::vector<std::string>& command, const TerminalSettings& settings) {
    const Arguments arguments(command);
    Pipe report;
    int ours = -1;
    int programs = -1;
    Checked(openpty(&ours, &programs, nullptr, settings.modes, &settings.size), "openpty");
    terminal_ = Descriptor(ours);
    Descriptor programs_end(programs);
    // Orphaned processes of the program become children of this process, so that it can reap them.
    // Fails in emulators that do not support it.
    std::ignore = prctl(PR_SET_CHILD_SUBREAPER, 1);
    Checked(fcntl(ours, F_SETFD, FD_CLOEXEC), "fcntl");
    Checked(fcntl(ours, F_SETFL, O_RDWR | O_NONBLOCK), "fcntl");
    id_ = Checked(fork(), "fork");
    if (id_ == 0) {
        TakeTerminal(programs);
        pthread_sigmask(SIG_SETMASK, &signals_.MaskBefore(), nullptr);
        arguments.Execute(report.writer.Number());
    }
    programs_end.Close();
    try {
        CheckStart(report, command.front());
    } catch (const CannotRun&) {
        Reap();
        throw;
    }
}

Program::~Program() {
    End();
    Reap();
}

bool Program::HasEnded() {
    siginfo_t info = {};
    if (!has_ended_ &&
        waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        info.si_pid == id_) {
        has_ended_ = true;
        // As wait() would set it. The process is not reaped: the ID of its group stays valid.
        status_ = info.si_code == CLD_EXITED ? W_EXITCODE(info.si_status, 0) : info.si_status;
    }
    return has_ended_;
}

// Returns whether there was any output.
bool Program::ReadOutput(std::string& output) {
    std::array<char, 65536> chunk;
    const ssize_t count = is_closed_ ? 0 : read(Terminal(), chunk.data(), chunk.size());
    // A pseudo-terminal that every process has closed fails with EIO.
    is_closed_ = is_closed_ || count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (count > 0) {
        output.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

Program::Event Program::Wait(Clock::time_point deadline, std::string& output, int input) {
    for (;;) {
        const bool has_ended = HasEnded();  // before the read, so that no output is lost
        if (ReadOutput(output)) {
            return Event::kOutput;
        }
        if (has_ended) {
            return Event::kEnd;
        }
        if (Clock::now() >= deadline) {
            return Event::kTimeout;
        }
        std::array<pollfd, 3> waits = {{{is_closed_ ? -1 : Terminal(), POLLIN, 0},
                                        {signals_.Number(), POLLIN, 0},
                                        {input, POLLIN, 0}}};
        poll(waits.data(), waits.size(), Remaining(deadline));
        last_signal_ = signals_.Take();
        if (last_signal_ != 0 && last_signal_ != SIGCHLD) {
            return Event::kSignal;
        }
        if (waits[2].revents != 0) {
            return Event::kInput;
        }
    }
}

void Program::Type(std::string_view keys, Clock::time_point deadline) {
    while (!keys.empty()) {
        const ssize_t count = write(Terminal(), keys.data(), keys.size());
        if (count > 0) {
            keys.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        if (errno == EIO) {
            return;  // it has ended, which Wait() reports
        }
        pollfd wait = {Terminal(), POLLOUT, 0};
        if (poll(&wait, 1, Remaining(deadline)) == 0) {
            throw CannotRun("the terminal accepts no input");
        }
    }
}

bool Program::AwaitEnd(Duration limit) {
    const Clock::time_point deadline = Clock::now() + limit;
    std::string discarded;
    for (;;) {
        discarded.clear();
        const Event event = Wait(deadline, discarded);
        if (event == Event::kEnd || Clock::now() >= deadline) {
            return event == Event::kEnd;
        }
    }
}

// If a signal asks this process to end, kills the program without waiting.
void Program::End() {
    if (std::exchange(was_asked_to_end_, true) || HasEnded()) {
        return;
    }
    constexpr char kEndOfFile = 4;
    std::ignore = write(Terminal(), &kEndOfFile, 1);
    try {
        for (const int number : {SIGHUP, SIGKILL}) {
            if (AwaitEnd(kPatienceAtEnd)) {
                return;
            }
            end_signal_ = number;
            Signal(number);
            Signal(SIGCONT);
        }
    } catch (const Interrupted&) {
        Signal(SIGKILL);
    }
}

// Processes that cannot be killed (of another user) or reaped (of a debugger) are left.
void Program::Reap() const {
    Signal(SIGKILL);
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const Clock::time_point deadline = Clock::now() + kPatienceAtEnd;
    for (;;) {
        const pid_t reaped = waitpid(-id_, nullptr, WNOHANG);
        const int left = Remaining(deadline);
        if (reaped < 0 || (reaped == 0 && left == 0)) {
            return;
        }
        if (reaped == 0) {
            const timespec limit = {left / 1000, left % 1000 * 1'000'000L};
            sigtimedwait(&child, nullptr, &limit);
        }
    }
}

Ending Program::HowEnded() const {
    return WIFEXITED(status_) ? Ending{false, WEXITSTATUS(status_)}
                              : Ending{true, WTERMSIG(status_)};
}

std::string Program::Describe() const {
    if (!has_ended_) {
        return "does not end";
    }
    const Ending ending = HowEnded();
    if (!ending.by_signal) {
        return "ended with status " + Write(ending);
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the only thread
    return "was ended by " + Write(ending) + " (" + strsignal(ending.number) + ")";
}

}  // namespace play
