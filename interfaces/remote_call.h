#pragma once

#include "console/errors.h"
#include "interfaces/glib_ptr.h"

#include <gio/gio.h>

#include <string>
#include <utility>

namespace morvane {

/// Makes a typed proxy on the system bus with `new_for_bus`, one of the generated
/// `..._proxy_new_for_bus_sync`. Notifications are delivered on the main thread, whichever thread
/// creates the proxy. Throws ProxyException, whose text names the proxy by `kind`.
template <typename Proxy>
GlibPtr<Proxy> MakeProxy(Proxy* (*new_for_bus)(GBusType, GDBusProxyFlags, const gchar*,
                                               const gchar*, GCancellable*, GError**),
                         const std::string& bus_name, const std::string& path, const char* kind) {
    ErrorPtr error;
    GlibPtr<Proxy> proxy(new_for_bus(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, bus_name.c_str(),
                                     path.c_str(), nullptr, Out(error)));
    if (error) {
        throw ProxyException(std::string("Failed to allocate ") + kind +
                             " proxy. Message: " + error->message);
    }
    return proxy;
}

/// Calls `call_sync`, one of the generated `..._call_..._sync`, and waits for the reply. Returns
/// the error, or null on success. If the daemon does not answer, blocks for GLib's default time-out
/// of 25 s; threads that wait for the caller's locks are blocked as long.
template <typename Call, typename Proxy, typename... Arguments>
[[nodiscard]] ErrorPtr CallRemote(Call call_sync, const GlibPtr<Proxy>& proxy,
                                  Arguments&&... arguments) {
    ErrorPtr error;
    call_sync(proxy.get(), std::forward<Arguments>(arguments)..., nullptr, Out(error));
    return error;
}

}  // namespace morvane
