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
    /// Announces that it has gone, if there was one.
    void Unexport(const std::string& path);
    [[nodiscard]] bool Has(const std::string& path) const;
    /// Whether the object exists, without this interface.
    [[nodiscard]] bool Lacks(const std::string& path, const std::string& interface) const;

    /// Serves the objects on a connection; null serves them nowhere.
    void Attach(GDBusConnection* connection);

  private:
    morvane::GlibPtr<GDBusObjectManagerServer> server_;
};

/// Sends at once what the skeleton would announce in the next turn of the main loop.
void Announce(gpointer skeleton);

/// The skeleton's properties as they are (a{sv}).
morvane::VariantPtr PropertiesOf(gpointer skeleton);

/// Sets a property by its D-Bus name; the value must be of its type.
void SetProperty(gpointer skeleton, const std::string& name, GVariant* value);

}  // namespace simulator
