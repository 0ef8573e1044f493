#include "simulator/bus/object_tree.h"

#include <cctype>

namespace simulator {
namespace {

using morvane::GlibPtr;

/// The GObject name of a D-Bus property: "new-missed-calls" for "NewMissedCalls".
std::string Hyphenated(const std::string& name) {
    std::string hyphenated;
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isupper(byte) != 0 && !hyphenated.empty()) {
            hyphenated += '-';
        }
        hyphenated += static_cast<char>(std::tolower(byte));
    }
    return hyphenated;
}

}  // namespace

void ObjectTree::Export(const std::string& path,
                        std::initializer_list<GDBusInterfaceSkeleton*> interfaces) {
    const GlibPtr<GDBusObjectSkeleton> object(g_dbus_object_skeleton_new(path.c_str()));
    for (GDBusInterfaceSkeleton* interface : interfaces) {
        g_dbus_object_skeleton_add_interface(object.get(), interface);
    }
    g_dbus_object_manager_server_export(server_.get(), object.get());
}

void ObjectTree::Unexport(const std::string& path) {
    g_dbus_object_manager_server_unexport(server_.get(), path.c_str());
}

bool ObjectTree::Has(const std::string& path) const {
    const GlibPtr<GDBusObject> object(
        g_dbus_object_manager_get_object(G_DBUS_OBJECT_MANAGER(server_.get()), path.c_str()));
    return object != nullptr;
}

bool ObjectTree::Lacks(const std::string& path, const std::string& interface) const {
    const GlibPtr<GDBusInterface> found(g_dbus_object_manager_get_interface(
        G_DBUS_OBJECT_MANAGER(server_.get()), path.c_str(), interface.c_str()));
    return found == nullptr && Has(path);
}

void ObjectTree::Attach(GDBusConnection* connection) {
    g_dbus_object_manager_server_set_connection(server_.get(), connection);
}

void Announce(gpointer skeleton) {
    g_dbus_interface_skeleton_flush(G_DBUS_INTERFACE_SKELETON(skeleton));
}

morvane::VariantPtr PropertiesOf(gpointer skeleton) {
    // Generated skeletons return a floating reference.
    return morvane::VariantPtr(g_variant_take_ref(
        g_dbus_interface_skeleton_get_properties(G_DBUS_INTERFACE_SKELETON(skeleton))));
}

void SetProperty(gpointer skeleton, const std::string& name, GVariant* value) {
    GValue converted = G_VALUE_INIT;
    g_dbus_gvariant_to_gvalue(value, &converted);
    g_object_set_property(G_OBJECT(skeleton), Hyphenated(name).c_str(), &converted);
    g_value_unset(&converted);
}

}  // namespace simulator
