#pragma once

#include "simulator/daemon.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"

#include <string>

namespace morvane_test {

// For tests that run the application itself in a process of its own (see `Capture`).

/// What the process takes for the system bus from now on.
void UseBus(const std::string& address);

/// A line of the test's own among what the tool prints.
void Say(const char* text);

/// Runs the handlers of everything that has been announced on the process's bus, on this thread.
void DispatchNotices();

/// A bus with a daemon, which the process uses.
class SimulatedBus {
  public:
    SimulatedBus();

    simulator::Options Options(const std::string& instance) const;
    std::string PulledPhonebook() const { return directory_.File("phonebook.vcf"); }

    /// The application's client gets a session with a transfer, whose file goes with it.
    void OpenSession();

    const PrivateBus& private_bus() const { return bus_; }
    simulator::Daemon& daemon() { return daemon_; }

  private:
    TemporaryDirectory directory_;
    PrivateBus bus_;
    simulator::Daemon daemon_;
};

}  // namespace morvane_test
