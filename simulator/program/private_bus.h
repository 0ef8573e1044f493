#pragma once

#include "simulator/program/work_directory.h"

#include <sys/types.h>

#include <string>

namespace simulator {

/// A message bus, run by dbus-daemon, for this user only. Its process has a session of its own,
/// so that Ctrl-C does not reach it, and ends with this object or with the thread that created it.
class PrivateBus {
  public:
    /// The bus accepts connections when this returns. Throws `std::runtime_error` with one line if
    /// dbus-daemon does not start. The caller may have blocked signals.
    explicit PrivateBus(const WorkDirectory& directory);
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    [[nodiscard]] const std::string& address() const { return address_; }

  private:
    PrivateBus() = default;

    pid_t process_ = 0;
    std::string address_;
};

}  // namespace simulator
