#pragma once

#include "interfaces/glib_ptr.h"

#include <initializer_list>
#include <string>

namespace simulator {

/// The daemon's objects under the object manager at "/".
class ObjectTree {
  public:
    ObjectTree() : server_(g_dbus_object_manager_server_new("/")) {}

    /// Announces an object with these interfaces.
    void Export(const std::string& path, std::initializer_list<GDBusInterfaceSkeleton*> interfaces);
    /// Removes the object and announces that, if it was exported.
    void Unexport(const std::string& path);
    [[nodiscard]] bool Has(const std::string& path) const;
    /// Whether the object exists but lacks this interface.
    [[nodiscard]] bool Lacks(const std::string& path, const std::string& interface) const;

    /// Serves the objects on a connection; null serves them nowhere.
    void Attach(GDBusConnection* connection);

  private:
    morvane::GlibPtr<GDBusObjectManagerServer> server_;
};

/// Emits pending PropertiesChanged signals now, not in an idle callback.
void Announce(gpointer skeleton);

/// The skeleton's current properties (a{sv}).
morvane::VariantPtr PropertiesOf(gpointer skeleton);

/// Sets a property by its D-Bus name; the value must be of its type.
void SetProperty(gpointer skeleton, const std::string& name, GVariant* value);

}  // namespace simulator
