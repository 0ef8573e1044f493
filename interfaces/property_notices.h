#pragma once

#include "console/console_output.h"
#include "console/table.h"

#include <gio/gio.h>

namespace morvane {

/// How the change of one property of a typed proxy is reported. `report` is called on the main
/// thread with the proxy. The context that subscribed may already be destroyed by then: the
/// callback must access only the proxy.
template <typename Proxy>
struct PropertyNotice {
    const char* signal;  ///< "notify::" and the property's hyphenated name
    void (*report)(Proxy* proxy, const char* label);
    const char* label;
};

template <typename Proxy>
void OnNotify(Proxy* proxy, GParamSpec* /*property*/, gpointer row) {
    const auto* const notice = static_cast<const PropertyNotice<Proxy>*>(row);
    notice->report(proxy, notice->label);
}

/// Reports every later change of the listed properties, for the lifetime of `proxy`.
template <typename Proxy>
void FollowChanges(Proxy* proxy, Table<PropertyNotice<Proxy>> notices) {
    for (const PropertyNotice<Proxy>& notice : notices) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): callbacks only read it
        auto* const row = const_cast<PropertyNotice<Proxy>*>(&notice);
        g_signal_connect(proxy, notice.signal, G_CALLBACK(OnNotify<Proxy>), row);
    }
}

inline const char* OrUnknown(const char* text) {
    return text == nullptr ? "Unknown" : text;
}

// Callbacks for the generated property getters. Texts are borrowed from the proxy's cache, which is
// safe only on the main thread, where the cache is updated.

template <auto kGet, typename Proxy>
void ReportText(Proxy* proxy, const char* label) {
    PROXY_Print(kNormal, "%s: %s\n", label, OrUnknown(kGet(proxy)));
}

template <auto kGet, typename Proxy>
void ReportNumber(Proxy* proxy, const char* label) {
    PROXY_Print(kNormal, "%s: %d\n", label, int{kGet(proxy)});
}

template <auto kGet, typename Proxy>
void ReportHex(Proxy* proxy, const char* label) {
    PROXY_Print(kNormal, "%s: %x\n", label, unsigned{kGet(proxy)});
}

}  // namespace morvane
