#include "support/bus_monitor.h"

#include "support/patience.h"
#include "support/private_bus.h"

namespace morvane_test {

BusMonitor::BusMonitor(const std::string& address, const std::string& member,
                       const std::string& argument)
    : member_(member), argument_(argument), connection_(ConnectToBus(address)) {
    filter_ = g_dbus_connection_add_filter(connection_.get(), Filter, this, nullptr);
    const std::string rule = "type='method_call',member='" + member + "'";
    const char* const rules[] = {rule.c_str(), nullptr};
    CallOnBus(connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
              "org.freedesktop.DBus.Monitoring", "BecomeMonitor",
              g_variant_new("(^asu)", rules, 0U));
}

BusMonitor::~BusMonitor() {
    // Close first: a filter may still run while it is being removed, but not on a closed
    // connection.
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    g_dbus_connection_remove_filter(connection_.get(), filter_);
}

void BusMonitor::AwaitCall(Here here) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!counted_.wait_for(lock, Patience(), [this] { return calls_ > 0; }))
        FailTest(here, "no call of " + member_);
    --calls_;
}

// Returns null for calls: GDBus would reply to them, and a monitor must not send messages.
GDBusMessage* BusMonitor::Filter(GDBusConnection*, GDBusMessage* message, gboolean incoming,
                                 gpointer monitor) {
    if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;
    auto& self = *static_cast<BusMonitor*>(monitor);
    if (self.IsAwaited(message)) {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        ++self.calls_;
        self.counted_.notify_all();
    }
    g_object_unref(message);
    return nullptr;
}

bool BusMonitor::IsAwaited(GDBusMessage* message) const {
    if (member_ != g_dbus_message_get_member(message)) return false;
    const char* const argument = g_dbus_message_get_arg0(message);
    return argument_.empty() ||
           (argument && std::string(argument).find(argument_) != std::string::npos);
}

}  // namespace morvane_test
