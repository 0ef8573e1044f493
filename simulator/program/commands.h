#pragma once

#include "simulator/daemon.h"
#include "simulator/program/command_error.h"

#include <functional>
#include <string>

namespace simulator {

/// Executes command lines such as "refuse Select Failed The phone is busy".
class Commands {
  public:
    /// Receives the lines of the call log, each with its line end, in GDBus' worker thread. It must
    /// use neither the daemon nor the commands.
    using Sink = std::function<void(const std::string& line)>;

    /// Without a sink, calls cannot be logged.
    explicit Commands(Daemon& daemon, Sink log = nullptr) : daemon_(daemon), log_(std::move(log)) {}

    /// The answer: one or more lines, each with its line end. Throws `CommandError`. Empty lines
    /// and those that begin with "#" do nothing and have no answer.
    std::string Execute(const std::string& line);
    [[nodiscard]] bool IsQuitting() const { return quitting_; }

    // For the commands themselves.
    Daemon& daemon() { return daemon_; }
    void Quit() { quitting_ = true; }
    /// Returns whether it changed anything. Throws `CommandError` without a sink.
    bool ShowCalls(bool show);

  private:
    Daemon& daemon_;
    const Sink log_;
    bool quitting_ = false;
    Subscription calls_;
};

}  // namespace simulator
