#include "support/bus_monitor.h"

#include "support/patience.h"
#include "support/private_bus.h"

#include <stdexcept>

namespace morvane_test {

BusMonitor::BusMonitor(const std::string& address, const std::string& member,
                       const std::string& argument)
    : member_(member), argument_(argument), connection_(ConnectToBus(address)) {
    filter_ = g_dbus_connection_add_filter(connection_.get(), Filter, this, nullptr);
    const std::string rule = "type='method_call',member='" + member + "'";
    const char* const rules[] = {rule.c_str(), nullptr};
    morvane::ErrorPtr error;
    const morvane::VariantPtr reply(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(^asu)", rules, 0U),
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, morvane::Out(error)));
    if (!reply) throw std::runtime_error(error->message);
}

BusMonitor::~BusMonitor() {
    // A filter may still run while it is removed; nothing comes once the connection is closed.
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    g_dbus_connection_remove_filter(connection_.get(), filter_);
}

void BusMonitor::AwaitCall(Here here) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!counted_.wait_for(lock, Patience(), [this] { return calls_ > 0; }))
        FailTest(here, "nobody called " + member_);
    --calls_;
}

// A monitor must not answer what it hears, as GDBus would: no message goes on from here.
GDBusMessage* BusMonitor::Filter(GDBusConnection*, GDBusMessage* message, gboolean incoming,
                                 gpointer monitor) {
    if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;
    auto& self = *static_cast<BusMonitor*>(monitor);
    if (self.IsAwaited(message)) self.Count();
    g_object_unref(message);
    return nullptr;
}

bool BusMonitor::IsAwaited(GDBusMessage* message) const {
    if (member_ != g_dbus_message_get_member(message)) return false;
    const char* const argument = g_dbus_message_get_arg0(message);
    return argument_.empty() ||
           (argument && std::string(argument).find(argument_) != std::string::npos);
}

void BusMonitor::Count() {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++calls_;
    counted_.notify_all();
}

}  // namespace morvane_test
