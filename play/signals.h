#pragma once

#include "play/descriptor.h"

#include <csignal>
#include <exception>
#include <vector>

namespace play {

/// A signal asks this program to end.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    [[nodiscard]] int Signal() const { return signal_; }
    [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }

  private:
    int signal_;
};

/// While it lives, signals wait until they are read: those that end a program, SIGCHLD, and
/// `others`. Programs must be started with the mask from before.
class Signals {
  public:
    explicit Signals(const std::vector<int>& others = {});
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

    /// Becomes readable with a signal.
    [[nodiscard]] int Number() const { return descriptor_.Number(); }
    /// The next signal, or 0 if none waits. Throws Interrupted for one that ends a program.
    int Take();
    [[nodiscard]] const sigset_t& MaskBefore() const { return before_; }

  private:
    sigset_t before_ = {};
    Descriptor descriptor_;
};

}  // namespace play
