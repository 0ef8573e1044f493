#pragma once

#include "simulator/daemon.h"
#include "simulator/program/command_error.h"

#include <string>

namespace simulator {

/// Carries out one line of what the operator types, such as
/// "refuse Select com.veltrisonix.Error.Failed The phone is busy".
class Commands {
  public:
    explicit Commands(Daemon& daemon) : daemon_(daemon) {}

    /// What there is to tell, empty or ending in a line end. Throws `CommandError`.
    /// Empty lines and those that begin with "#" do nothing.
    std::string Execute(const std::string& line);
    [[nodiscard]] bool IsQuitting() const { return quitting_; }
    void Quit() { quitting_ = true; }

  private:
    Daemon& daemon_;
    bool quitting_ = false;
};

}  // namespace simulator
