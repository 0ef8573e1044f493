#pragma once

#include <gio/gio.h>

#include <optional>

namespace morvane {

// How the properties of a transfer that begins are printed: a line for each, where a value of a
// wrong type counts as absent. Both give the size in bytes if it was among them, 0 if it is absent.

/// Those of an `a{sv}`, in its order; what else is in it prints nothing.
std::optional<guint64> PrintProperties(GVariant* dictionary);

/// Those that the proxy of the transfer knows.
std::optional<guint64> PrintCachedProperties(GDBusProxy* proxy);

}  // namespace morvane
