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

/// A test of contexts in the test's own process, with a bus and a daemon. What is announced is
/// handled only when the test runs the main loop, as `DispatchNotices` does.
class ContextTest : public testing::Test {
  protected:
    ContextTest();
    /// A later test in this process must meet its own bus.
    void TearDown() override;

    simulator::Daemon& daemon() { return *daemon_; }
    PrivateBus& bus() { return bus_; }

    /// What `make` prints after its first message, `first`, when `announce` is heard between that
    /// message and the next.
    std::string PrintedAfter(const std::string& first, const std::function<void()>& make,
                             const std::function<void()>& announce);

    /// What the announcement prints.
    std::string Announced(const std::string& path, const std::string& interface,
                          const std::string& name, const std::string& value);

  private:
    PrivateBus bus_;
    std::optional<simulator::Daemon> daemon_;
    morvane::GlibPtr<GDBusConnection> connection_;
};

}  // namespace morvane_test
