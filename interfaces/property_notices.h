#pragma once

#include "console/console_output.h"
#include "console/table.h"

#include <gio/gio.h>

namespace morvane {

/// How the change of one property of a typed proxy is reported. `report` runs on the main thread
/// with the proxy that notified, which outlives the context that subscribed while a notification is
/// delivered: a report reaches for nothing but that proxy.
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

/// Reports every later change on `proxy` that has a row, for as long as the proxy lives.
template <typename Proxy>
void FollowChanges(Proxy* proxy, Table<PropertyNotice<Proxy>> notices) {
    for (const PropertyNotice<Proxy>& notice : notices) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): GLib hands it back to be read only
        auto* const row = const_cast<PropertyNotice<Proxy>*>(&notice);
        g_signal_connect(proxy, notice.signal, G_CALLBACK(OnNotify<Proxy>), row);
    }
}

inline const char* OrUnknown(const char* text) {
    return text == nullptr ? "Unknown" : text;
}

// Reports for the generated property getters. Texts are borrowed from the proxy's cache, which is
// safe on the main thread only: there the cache changes.

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
