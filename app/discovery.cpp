#include "app/obex_proxy.h"
#include "console/console_output.h"
#include "console/reporting.h"

#include <glib-unix.h>

#include <csignal>
#include <memory>
#include <new>

namespace morvane {
namespace {

enum class ObjectKind { kClient, kDevice, kOther };

ObjectKind KindOf(const std::string& path) {
    if (path == "/com/veltrisonix/obex") {
        return ObjectKind::kClient;
    }
    const std::size_t slash = path.rfind('/');
    const std::size_t last_element = slash == std::string::npos ? 0 : slash + 1;
    return path.compare(last_element, 4, "dev_") == 0 ? ObjectKind::kDevice : ObjectKind::kOther;
}

using ManagerPtr = GlibPtr<GDBusObjectManager>;

// Null after printing the error. An absent daemon is no error: the manager waits for it.
ManagerPtr ConnectManager(const std::string& bus_name) {
    // GLib rejects an invalid name by a failed assertion and sets no error.
    if (g_dbus_is_name(bus_name.c_str()) == FALSE) {
        PROXY_Print(kRed, "Error getting object manager client\n");
        return nullptr;
    }
    ErrorPtr error;
    ManagerPtr manager(g_dbus_object_manager_client_new_for_bus_sync(
        G_BUS_TYPE_SYSTEM, G_DBUS_OBJECT_MANAGER_CLIENT_FLAGS_NONE, bus_name.c_str(), "/", nullptr,
        nullptr, nullptr, nullptr, Out(error)));
    if (error) {
        g_printerr("Error getting object manager client: %s\n", error->message);
    }
    return manager;
}

// Exceptions must not propagate through GLib's C frames: noexcept terminates the process instead.
void OnObjectAdded(GDBusObjectManager* /*manager*/, GDBusObject* object,
                   gpointer /*data*/) noexcept {
    obexProxy.ObjectAdded(g_dbus_object_get_object_path(object));
}

void OnObjectRemoved(GDBusObjectManager* /*manager*/, GDBusObject* object,
                     gpointer /*data*/) noexcept {
    obexProxy.ObjectRemoved(g_dbus_object_get_object_path(object));
}

struct ObjectListRelease {
    void operator()(GList* objects) const noexcept { g_list_free_full(objects, g_object_unref); }
};

void ReportPresentObjects(ObexProxy& proxy, GDBusObjectManager* manager) {
    const std::unique_ptr<GList, ObjectListRelease> objects(
        g_dbus_object_manager_get_objects(manager));
    for (const GList* node = objects.get(); node != nullptr; node = node->next) {
        proxy.ObjectAdded(g_dbus_object_get_object_path(static_cast<GDBusObject*>(node->data)));
    }
}

// g_main_loop_quit() has no effect before the loop runs. This callback, the first in the loop,
// repeats a quit that was requested too early.
gboolean QuitIfStopped(gpointer /*data*/) {
    if (!obexProxy.IsRunning()) {
        obexProxy.StopThreads();
    }
    return G_SOURCE_REMOVE;
}

/// The GLib source of SIGINT; it removes itself when its handler runs.
class InterruptSource {
  public:
    explicit InterruptSource(GMainLoop* loop)
        : id_(g_unix_signal_add(SIGINT, terminationHandler, loop)) {}
    InterruptSource(const InterruptSource&) = delete;
    InterruptSource& operator=(const InterruptSource&) = delete;
    ~InterruptSource() {
        if (GSource* const source = g_main_context_find_source_by_id(nullptr, id_)) {
            g_source_destroy(source);
        }
    }

  private:
    guint id_;
};

}  // namespace

void ObexProxy::GDBusRun() {
    GMainLoop* const loop = CreateMainLoop();
    const InterruptSource interrupt(loop);
    const ManagerPtr manager = ConnectManager(GetBusName());
    if (!manager) {
        StopThreads();
        return;
    }
    ReportPresentObjects(*this, manager.get());
    g_signal_connect(manager.get(), "object-added", G_CALLBACK(OnObjectAdded), nullptr);
    g_signal_connect(manager.get(), "object-removed", G_CALLBACK(OnObjectRemoved), nullptr);
    g_idle_add_full(G_PRIORITY_HIGH, QuitIfStopped, nullptr, nullptr);
    g_main_loop_run(loop);
}

// Destroyed with this object, because StopThreads() may be called at any time.
GMainLoop* ObexProxy::CreateMainLoop() {
    const LockGuard guard(contents_mutex_);
    main_loop_.reset(g_main_loop_new(nullptr, FALSE));
    return main_loop_.get();
}

void ObexProxy::ObjectAdded(const std::string& path) {
    try {
        ReportErrors<ProxyException>([&] { AddObject(path); });
    } catch (const std::bad_alloc& error) {
        PROXY_Print(kRed, "Allocation failed: %s", error.what());
    }
}

void ObexProxy::AddObject(const std::string& path) {
    switch (KindOf(path)) {
        case ObjectKind::kClient:
            PROXY_Print(kNormal, "Found Client %s\n", path.c_str());
            AllocClient(path);
            break;
        case ObjectKind::kDevice:
            PROXY_Print(kNormal, "Found Device %s\n", path.c_str());
            AllocDevice(path);
            break;
        case ObjectKind::kOther:
            ClientAddObject(path);
            break;
    }
}

void ObexProxy::ObjectRemoved(const std::string& path) {
    switch (KindOf(path)) {
        case ObjectKind::kClient:
            FreeClient();
            break;
        case ObjectKind::kDevice:
            FreeDevice(path);
            break;
        case ObjectKind::kOther:
            ClientRemoveObject(path);
            return;
    }
    PROXY_Print(kRed, "Removed %s\n", path.c_str());
}

}  // namespace morvane
