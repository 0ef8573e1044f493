#pragma once

#include "console/errors.h"
#include "interfaces/glib_ptr.h"

#include <gio/gio.h>

#include <string>
#include <utility>

namespace morvane {

/// Makes a typed proxy on the system bus with `new_for_bus`, one of the generated
/// `..._proxy_new_for_bus_sync`. Its notifications arrive on the main thread, whichever thread
/// makes it. Throws ProxyException, in whose text `kind` names the proxy.
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

/// Makes the call `call_sync`, one of the generated `..._call_..._sync`, and waits for its reply.
/// Gives the bus's error, or null if the daemon accepted. A daemon that does not answer blocks the
/// caller, and whatever waits for a lock that it holds, for the bus library's 25 seconds.
template <typename Call, typename Proxy, typename... Arguments>
[[nodiscard]] ErrorPtr CallRemote(Call call_sync, const GlibPtr<Proxy>& proxy,
                                  Arguments&&... arguments) {
    ErrorPtr error;
    call_sync(proxy.get(), std::forward<Arguments>(arguments)..., nullptr, Out(error));
    return error;
}

}  // namespace morvane
