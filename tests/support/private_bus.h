#pragma once

#include <memory>
#include <string>

#include "interfaces/glib_ptr.h"
#include "support/child_process.h"
#include "support/temporary_directory.h"

namespace morvane_test {

/// A message bus for one test. The constructor returns when it accepts connections.
class PrivateBus {
  public:
    /// `policies` is XML; the default allows everything. Throws std::runtime_error if dbus-daemon
    /// does not start.
    explicit PrivateBus(const std::string& policies = kAllowEverything);

    const std::string& Address() const { return address_; }
    std::string ConfigurationFile() const { return directory_.File("bus.conf"); }

    /// Kills the bus with SIGKILL.
    void Kill();

  private:
    static const char kAllowEverything[];

    TemporaryDirectory directory_;
    std::unique_ptr<ChildProcess> process_;
    std::string address_;
};

/// The D-Bus address of the socket `path`.
std::string SocketAddress(const std::string& path);

/// Opens a new connection. Throws std::runtime_error.
morvane::GlibPtr<GDBusConnection> ConnectToBus(const std::string& address);

/// Calls a method and returns its reply. Throws std::runtime_error.
morvane::VariantPtr CallOnBus(GDBusConnection* bus, const std::string& bus_name, const char* path,
                              const char* interface, const char* method,
                              GVariant* arguments = nullptr);

}  // namespace morvane_test
