#pragma once

#include "simulator/daemon.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"

#include <string>

namespace morvane_test {

// For tests that run the application in a child process (see `Capture`).

/// Sets the address of the system bus for this process.
void UseBus(const std::string& address);

/// Prints a line through the tool's output functions.
void PrintLine(const char* text);

/// Handles on this thread all signals that have been sent on the process's bus.
void DispatchSignals();

/// A bus with a daemon, set as the process's system bus.
class SimulatedBus {
  public:
    SimulatedBus();

    simulator::Options Options(const std::string& instance) const;
    std::string PulledPhonebook() const { return directory_.File("phonebook.vcf"); }

    /// Opens a session with a transfer, whose file is removed with the session.
    void OpenSession();

    const PrivateBus& private_bus() const { return bus_; }
    simulator::Daemon& daemon() { return daemon_; }

  private:
    TemporaryDirectory directory_;
    PrivateBus bus_;
    simulator::Daemon daemon_;
};

}  // namespace morvane_test
