#pragma once

#include <gio/gio.h>

#include <optional>

namespace morvane {

// Print the initial properties of a transfer, a line for each; a value of a wrong type is treated
// as absent. Both return the size in bytes, 0 if it is absent.

/// Those in an `a{sv}`, in its order; prints nothing for unknown entries.
std::optional<guint64> PrintProperties(GVariant* dictionary);

/// Those in the proxy's cache.
std::optional<guint64> PrintCachedProperties(GDBusProxy* proxy);

}  // namespace morvane
