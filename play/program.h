#pragma once

#include "play/descriptor.h"
#include "play/session_file.h"
#include "play/signals.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sys/ioctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <termios.h>

namespace play {

using Clock = std::chrono::steady_clock;

/// Milliseconds until `deadline`, for poll().
int Remaining(Clock::time_point deadline);

/// A program could not be run.
class CannotRun : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Settings of the terminal on which a program is started. Without modes, the default ones.
struct TerminalSettings {
    const termios* modes = nullptr;
    winsize size = {24, 80, 0, 0};
};

/// A running program on a pseudo-terminal of its own. When this object is destroyed, the program
/// and all processes of its group have ended, unless they cannot be killed.
class Program {
  public:
    enum class Event { kOutput, kInput, kSignal, kEnd, kTimeout };

    /// Throws CannotRun.
    Program(const std::vector<std::string>& command, const TerminalSettings& settings,
            Signals& signals);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// Waits for an event and appends output to `output`. Returns kEnd once the
    /// program has ended and all of its output was read, kInput if `input` can be read.
    Event Wait(Clock::time_point deadline, std::string& output, int input = -1);
    /// The signal of the last kSignal.
    [[nodiscard]] int LastSignal() const { return last_signal_; }
    /// Types the keys. Throws CannotRun if the terminal does not accept them in time.
    void Type(std::string_view keys, Clock::time_point deadline);
    /// Asks the program to end: Ctrl-D, then SIGHUP, then SIGKILL.
    void End();
    /// After End(): the last signal that it sent, or 0 if none was needed.
    [[nodiscard]] int EndSignal() const { return end_signal_; }

    [[nodiscard]] int Terminal() const { return terminal_.Number(); }
    void Signal(int number) const { kill(-id_, number); }
    /// Call it once the program has ended.
    [[nodiscard]] Ending HowEnded() const;
    /// "ended with status 1", "was ended by signal 11 (Segmentation fault)" or "does not end".
    [[nodiscard]] std::string Describe() const;

  private:
    void Start(const std::vector<std::string>& command, const TerminalSettings& settings);
    bool HasEnded();
    bool ReadOutput(std::string& output);
    bool AwaitEnd(Duration limit);
    void Reap() const;

    Signals& signals_;
    Descriptor terminal_;
    pid_t id_ = -1;
    bool was_asked_to_end_ = false;
    int end_signal_ = 0;
    bool has_ended_ = false;
    bool is_closed_ = false;  // every process has closed the terminal
    int status_ = 0;
    int last_signal_ = 0;
};

}  // namespace play
