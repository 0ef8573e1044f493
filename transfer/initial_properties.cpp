#include "transfer/initial_properties.h"

#include "console/console_output.h"
#include "interfaces/glib_ptr.h"
#include "interfaces/property_notices.h"

#include <cstring>

namespace morvane {
namespace {

// How the value of a property is printed. `types` lists the accepted D-Bus types; a value of
// another type is treated as absent.
struct InitialLine {
    const char* property;
    const char* types;
    const char* label;
};

constexpr InitialLine kInitialLines[] = {
    {"Status", "s", "Status"},
    {"Name", "s", "Object Name"},
    {"Filename", "s", "Filename"},
    {"Size", "t", "Size"},
    {"Transferred", "t", "Bytes Transferred"},
    {"Session", "so", "Session"},
    {"Type", "s", "MIME type"},
};

using Size = std::optional<guint64>;

bool HasType(GVariant* value, const char* types) {
    return std::strchr(types, g_variant_classify(value)) != nullptr;
}

// `value` has one of the line's types or is null.
void PrintInitialLine(const InitialLine& line, GVariant* value, Size& size) {
    if (line.types[0] == 's') {
        const char* const text = value == nullptr ? nullptr : g_variant_get_string(value, nullptr);
        PROXY_Print(kNormal, "%s: %s\n", line.label, OrUnknown(text));
        return;
    }
    const guint64 number = value == nullptr ? 0 : g_variant_get_uint64(value);
    if (std::strcmp(line.property, "Size") == 0) {
        size = number;
    }
    PROXY_Print(kNormal, "%s: %u\n", line.label, static_cast<guint32>(number));
}

void PrintEntry(const char* key, GVariant* value, Size& size) {
    for (const InitialLine& line : kInitialLines) {
        if (std::strcmp(key, line.property) == 0) {
            PrintInitialLine(line, HasType(value, line.types) ? value : nullptr, size);
        }
    }
}

}  // namespace

std::optional<guint64> PrintProperties(GVariant* dictionary) {
    Size size;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary);
    const gchar* key = nullptr;
    VariantPtr value;
    while (g_variant_iter_next(&iterator, "{&sv}", &key, static_cast<GVariant**>(Out(value))) !=
           FALSE) {
        PrintEntry(key, value.get(), size);
    }
    return size;
}

std::optional<guint64> PrintCachedProperties(GDBusProxy* proxy) {
    Size size;
    for (const InitialLine& line : kInitialLines) {
        const VariantPtr value(g_dbus_proxy_get_cached_property(proxy, line.property));
        PrintInitialLine(line, value.get(), size);
    }
    return size;
}

}  // namespace morvane
