#pragma once

#include "play/descriptor.h"

#include <csignal>
#include <exception>
#include <vector>

namespace play {

/// Thrown when a signal asks this program to end.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    [[nodiscard]] int Signal() const { return signal_; }
    [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }

  private:
    int signal_;
};

/// Blocks signals during its lifetime and queues them for `Take`: those that end a program and are
/// not ignored, SIGCHLD, and `others`. Child processes must be started with `MaskBefore`.
class Signals {
  public:
    explicit Signals(const std::vector<int>& others = {});
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

    /// A descriptor that is readable while a signal is pending.
    [[nodiscard]] int Number() const { return descriptor_.Number(); }
    /// The next signal, or 0 if none is pending. Throws Interrupted for one that ends a program.
    int Take();
    [[nodiscard]] const sigset_t& MaskBefore() const { return before_; }

  private:
    sigset_t before_ = {};
    Descriptor descriptor_;
};

}  // namespace play
