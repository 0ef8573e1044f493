#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "interfaces/glib_ptr.h"
#include "simulator/daemon.h"
#include "support/captured_output.h"
#include "support/private_bus.h"
#include "support/value.h"

namespace morvane_test {

/// Fixture for contexts in the test's own process, with a bus and a daemon. Signals are handled
/// only when the test runs the main loop, as `DispatchSignals` does.
class ContextTest : public testing::Test {
  protected:
    ContextTest();
    /// Releases the shared connection so that the next test in this process gets its own bus.
    void TearDown() override;

    simulator::Daemon& daemon() { return *daemon_; }
    PrivateBus& bus() { return bus_; }

    /// Runs `make`. After its first message, `first`, calls `announce` and handles the signals that
    /// it sends. Returns the output after that message.
    std::string PrintedAfter(const std::string& first, const std::function<void()>& make,
                             const std::function<void()>& announce);

    /// What is printed when the daemon changes this property.
    std::string PrintedOnChange(const std::string& path, const std::string& interface,
                                const std::string& name, const std::string& value);

  private:
    PrivateBus bus_;
    std::optional<simulator::Daemon> daemon_;
    morvane::GlibPtr<GDBusConnection> connection_;
};

}  // namespace morvane_test
