#include "simulator/program/foreground.h"

#include "simulator/program/spawn.h"

#include <glib-unix.h>

#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::TextArrayPtr;

constexpr int kCannotExecute = 126;
constexpr int kNotFound = 127;

constexpr std::array kTerminating = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

sigset_t QueuedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kTerminating) {
        sigaddset(&set, signal);
    }
    sigaddset(&set, SIGTSTP);
    sigaddset(&set, SIGCHLD);
    return set;
}

void PrepareCommand(gpointer signals) {
    static_cast<const SignalQueue*>(signals)->Restore();
}

pid_t StartCommand(SignalQueue& signals, const std::vector<std::string>& command,
                   const std::string& bus_address) {
    const TextArrayPtr environment(
        g_environ_setenv(g_get_environ(), "DBUS_SYSTEM_BUS_ADDRESS", bus_address.c_str(), TRUE));
    constexpr auto kSpawnFlags =
        static_cast<GSpawnFlags>(G_SPAWN_CHILD_INHERITS_STDIN | G_SPAWN_LEAVE_DESCRIPTORS_OPEN);
    ErrorPtr error;
    const pid_t process =
        Start({command, kSpawnFlags, environment.get(), -1, -1, PrepareCommand, &signals}, error);
    if (g_error_matches(error.get(), G_SPAWN_ERROR, G_SPAWN_ERROR_NOENT) != FALSE) {
        // exec(2) reports the same for the interpreter of a script and for the dynamic linker.
        throw morvane::TextPtr(g_find_program_in_path(command.front().c_str()))
            ? ExitError(kCannotExecute,
                        "Cannot execute " + command.front() + ": its interpreter does not exist")
            : ExitError(kNotFound, "No such command: " + command.front());
    }
    if (error) {
        throw ExitError(kCannotExecute, "Cannot execute " + command.front());
    }
    return process;
}

}  // namespace

int EndAs(const Ending& ending) {
    if (ending.signal != 0) {
        prctl(PR_SET_DUMPABLE, 0);
        std::fflush(nullptr);
        std::signal(ending.signal, SIG_DFL);
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, ending.signal);
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
        raise(ending.signal);
    }
    return ending.status;
}

SignalQueue::SignalQueue()
    : descriptor_([] {
          const sigset_t set = QueuedSignals();
          return Checked(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
      }()) {
    const sigset_t set = QueuedSignals();
    pthread_sigmask(SIG_BLOCK, &set, &original_mask_);
    for (std::size_t i = 0; i < kResetByGlib.size(); ++i) {
        // Before GIO or g_spawn_async_with_fds() changes it.
        sigaction(kResetByGlib[i], nullptr, &original_actions_[i]);
    }
}

std::optional<signalfd_siginfo> SignalQueue::Take() {
    signalfd_siginfo info = {};
    if (read(descriptor(), &info, sizeof info) != sizeof info) {
        return std::nullopt;
    }
    return info;
}

int SignalQueue::TakeTermination() {
    int first = 0;
    while (const auto info = Take()) {
        const auto signal = static_cast<int>(info->ssi_signo);
        if (first == 0 &&
            std::find(kTerminating.begin(), kTerminating.end(), signal) != kTerminating.end()) {
            first = signal;
        }
    }
    return first;
}

void SignalQueue::Restore() const {
    for (std::size_t i = 0; i < kResetByGlib.size(); ++i) {
        sigaction(kResetByGlib[i], &original_actions_[i], nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &original_mask_, nullptr);
}

Foreground::Foreground(SignalQueue& signals, const std::vector<std::string>& command,
                       const std::string& bus_address, std::function<void()> on_end)
    : signals_(signals),
      on_end_(std::move(on_end)),
      process_(StartCommand(signals, command, bus_address)),
      source_(g_unix_fd_add(
          signals.descriptor(), G_IO_IN,
          [](gint /*file*/, GIOCondition /*condition*/, gpointer self) -> gboolean {
              static_cast<Foreground*>(self)->OnSignals();
              return G_SOURCE_CONTINUE;
          },
          this)) {}

Foreground::~Foreground() {
    g_source_remove(source_);
}

void Foreground::Terminate() const {
    if (!ending_) {
        kill(process_, SIGTERM);
        kill(process_, SIGCONT);
    }
}

Ending Foreground::AwaitEnd() const {
    while (!ending_) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return *ending_;
}

void Foreground::OnSignals() {
    while (const auto info = signals_.Take()) {
        const auto signal = static_cast<int>(info->ssi_signo);
        if (signal == SIGCHLD) {
            Reap();
        } else if (!ending_ && (info->ssi_code <= 0 || signal == SIGHUP)) {
            kill(process_, signal);
        }
    }
}

void Foreground::Reap() {
    int status = 0;
    while (!ending_ && waitpid(process_, &status, WNOHANG | WUNTRACED) > 0) {
        if (WIFSTOPPED(status)) {
            raise(SIGSTOP);
            kill(process_, SIGCONT);
        } else {
            ending_ = WIFSIGNALED(status) ? Ending{EXIT_FAILURE, WTERMSIG(status)}
                                          : Ending{WEXITSTATUS(status)};
            on_end_();
        }
    }
}

}  // namespace simulator
