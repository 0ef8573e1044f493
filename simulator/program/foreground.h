#pragma once

#include "simulator/program/file_descriptor.h"

#include <sys/signalfd.h>
#include <sys/types.h>

#include <array>
#include <csignal>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulator {

/// How a process ended.
struct Ending {
    int status;
    int signal = 0;  ///< the signal that ended the process, or 0
};

/// Ends this process by the signal, without a core dump, or returns the exit status. On Ctrl-C a
/// shell leaves a loop only if SIGINT ended the command in it.
int EndAs(const Ending& ending);

/// Ends the program with an exit status other than `EXIT_FAILURE`.
class ExitError : public std::runtime_error {
  public:
    ExitError(int status, const std::string& message)
        : std::runtime_error(message), status_(status) {}
    [[nodiscard]] int status() const { return status_; }

  private:
    int status_;
};

/// GIO ignores SIGPIPE, and g_spawn_async_with_fds() sets the default actions in the child process.
constexpr std::array kResetByGlib = {SIGHUP, SIGINT, SIGPIPE, SIGTERM};

/// Blocks the signals for a foreground command permanently and queues them. Must be constructed
/// before any other thread.
class SignalQueue {
  public:
    SignalQueue();

    [[nodiscard]] int descriptor() const { return descriptor_.number(); }
    std::optional<signalfd_siginfo> Take();
    /// Removes all signals; returns the first that would have ended the process, or 0.
    int TakeTermination();
    /// Restores the original signal mask and actions. Async-signal-safe.
    void Restore() const;

  private:
    sigset_t original_mask_ = {};
    std::array<struct sigaction, kResetByGlib.size()> original_actions_ = {};
    FileDescriptor descriptor_;
};

/// A child process in the same process group and with the same descriptors as this one. This
/// process ignores signals that the terminal sends to the group (Ctrl-C, Ctrl-\, Ctrl-Z). It
/// forwards signals from other processes, and SIGHUP, which the kernel sends to the session leader
/// only. It stops when the command stops, and continues the command when it is continued.
class Foreground {
  public:
    /// `on_end` is called in the default main context. Throws `ExitError` with the status of a
    /// shell, 127 or 126, if the command cannot be executed.
    Foreground(SignalQueue& signals, const std::vector<std::string>& command,
               const std::string& bus_address, std::function<void()> on_end);
    Foreground(const Foreground&) = delete;
    Foreground& operator=(const Foreground&) = delete;
    ~Foreground();

    /// Sends SIGTERM, unless the command has ended.
    void Terminate() const;
    /// Runs the default main context until the command has ended.
    [[nodiscard]] Ending AwaitEnd() const;

  private:
    void OnSignals();
    void Reap();

    SignalQueue& signals_;
    const std::function<void()> on_end_;
    const pid_t process_;
    const unsigned source_;
    std::optional<Ending> ending_;
};

}  // namespace simulator
