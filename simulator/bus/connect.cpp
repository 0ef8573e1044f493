#include "simulator/bus/connect.h"

#include <stdexcept>

namespace simulator {

using morvane::ErrorPtr;
using morvane::GlibPtr;
using morvane::Out;

GlibPtr<GDBusConnection> Connect(const std::string& address) {
    ErrorPtr error;
    constexpr auto kFlags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    GlibPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        address.c_str(), kFlags, nullptr, nullptr, Out(error)));
    if (!connection) {
        throw std::runtime_error(std::string("Cannot connect to the bus: ") + error->message);
    }
    return connection;
}

}  // namespace simulator
