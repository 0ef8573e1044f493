#include "soak/footprint.h"

#include "interfaces/glib_ptr.h"
#include "support/process_files.h"

#include <stdexcept>

namespace morvane_test {
namespace {

// The bus keeps count of what it does on behalf of each connection.
std::size_t CountMatchRules(GDBusConnection* bus, const std::string& unique_name) {
    morvane::ErrorPtr error;
    const morvane::VariantPtr reply(g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Debug.Stats",
        "GetAllMatchRules", nullptr, G_VARIANT_TYPE("(a{sas})"), G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, morvane::Out(error)));
    if (!reply) throw std::runtime_error(error->message);
    const morvane::VariantPtr all(g_variant_get_child_value(reply.get(), 0));
    const morvane::VariantPtr rules(
        g_variant_lookup_value(all.get(), unique_name.c_str(), G_VARIANT_TYPE_STRING_ARRAY));
    return rules ? g_variant_n_children(rules.get()) : 0;
}

}  // namespace

std::string Footprint::Describe() const {
    return std::to_string(resident_kib) + " KiB resident (" + std::to_string(proportional_kib) +
           " KiB of its own), " + std::to_string(descriptors) + " descriptors, " +
           std::to_string(match_rules) + " match rules";
}

Footprint MeasureFootprint(pid_t process, GDBusConnection* bus, const std::string& unique_name) {
    return {ReadProcessNumber(process, "status", "VmRSS:"),
            ReadProcessNumber(process, "smaps_rollup", "Pss:"), CountDescriptors(process),
            CountMatchRules(bus, unique_name)};
}

}  // namespace morvane_test
