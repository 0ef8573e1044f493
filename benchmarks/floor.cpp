// The minimal cost of the bus library: the same object manager client, proxies and notifications as
// in the tool, in one thread, without output except when a step is complete.
//
// Usage: morvane-floor [download|listing]
// It subscribes to the devices. With "download" it also opens a session to the first device, starts
// a download and subscribes to it; with "listing" it opens a session and, at the first line of its
// input, requests a listing and reads each vCard. It exits at the end of its input.

#include "interfaces/bus_name.h"
#include "interfaces/glib_ptr.h"

#include "device1.h"
#include "obex-client1.h"
#include "obex-phonebook-access1.h"
#include "obex-session1.h"
#include "obex-transfer1.h"

#include <glib-unix.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using morvane::ErrorPtr;
using morvane::GlibPtr;
using morvane::Out;
using morvane::TextPtr;
using morvane::VariantPtr;

constexpr char kClientPath[] = "/com/veltrisonix/obex";
constexpr char kTarget[] = "0000112f-0000-1000-8000-00805f9b34fb";
constexpr char kLastStatus[] = "the last one";

struct Floor {
    std::vector<GlibPtr<Device1>> devices;
    GlibPtr<ObexClient1> client;
    GlibPtr<ObexSession1> session;
    GlibPtr<ObexPhonebookAccess1> phonebook;
    GlibPtr<ObexTransfer1> transfer;
    unsigned notices = 0;
};

void Demand(const ErrorPtr& error) {
    if (error) throw std::runtime_error(error->message);
}

template <typename Proxy, typename NewForBus>
GlibPtr<Proxy> MakeProxy(NewForBus new_for_bus, const std::string& path) {
    ErrorPtr error;
    GlibPtr<Proxy> proxy(new_for_bus(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE,
                                     morvane::kDefaultBusName, path.c_str(), nullptr, Out(error)));
    Demand(error);
    return proxy;
}

void Say(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

void Add(Floor& floor, const std::string& path) {
    if (path.find("/dev_") != std::string::npos) {
        floor.devices.push_back(MakeProxy<Device1>(device1_proxy_new_for_bus_sync, path));
    } else if (path == kClientPath) {
        floor.client = MakeProxy<ObexClient1>(obex_client1_proxy_new_for_bus_sync, path);
    }
}

void OnAdded(GDBusObjectManager* /*manager*/, GDBusObject* object, gpointer floor) {
    Add(*static_cast<Floor*>(floor), g_dbus_object_get_object_path(object));
}

void OnRemoved(GDBusObjectManager* /*manager*/, GDBusObject* /*object*/, gpointer /*floor*/) {}

GlibPtr<GDBusObjectManager> FollowObjects(Floor& floor) {
    ErrorPtr error;
    GlibPtr<GDBusObjectManager> manager(g_dbus_object_manager_client_new_for_bus_sync(
        G_BUS_TYPE_SYSTEM, G_DBUS_OBJECT_MANAGER_CLIENT_FLAGS_NONE, morvane::kDefaultBusName, "/",
        nullptr, nullptr, nullptr, nullptr, Out(error)));
    Demand(error);
    g_signal_connect(manager.get(), "object-added", G_CALLBACK(OnAdded), &floor);
    g_signal_connect(manager.get(), "object-removed", G_CALLBACK(OnRemoved), &floor);
    GList* const objects = g_dbus_object_manager_get_objects(manager.get());
    for (const GList* node = objects; node != nullptr; node = node->next) {
        Add(floor, g_dbus_object_get_object_path(static_cast<GDBusObject*>(node->data)));
    }
    g_list_free_full(objects, g_object_unref);
    return manager;
}

void OnNotify(GObject* /*proxy*/, GParamSpec* /*property*/, gpointer floor) {
    ++static_cast<Floor*>(floor)->notices;
}

void OnStatus(ObexTransfer1* transfer, GParamSpec* property, gpointer data) {
    OnNotify(G_OBJECT(transfer), property, data);
    const gchar* const status = obex_transfer1_get_status(transfer);
    if (status != nullptr && std::strcmp(status, kLastStatus) == 0) {
        Say(std::string(kLastStatus) + " of " +
            std::to_string(static_cast<const Floor*>(data)->notices));
    }
}

template <typename Proxy>
void Follow(Floor& floor, const GlibPtr<Proxy>& proxy, std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        const std::string signal = std::string("notify::") + name;
        g_signal_connect(proxy.get(), signal.c_str(), G_CALLBACK(OnNotify), &floor);
    }
}

void OpenSession(Floor& floor) {
    ErrorPtr error;
    const TextPtr address(device1_dup_address(floor.devices.front().get()));
    TextPtr path;
    obex_client1_call_create_session_sync(floor.client.get(), address.get(),
                                          g_variant_new_parsed("{'Target': <%s>}", kTarget),
                                          Out(path), nullptr, Out(error));
    Demand(error);
    floor.phonebook =
        MakeProxy<ObexPhonebookAccess1>(obex_phonebook_access1_proxy_new_for_bus_sync, path.get());
    floor.session = MakeProxy<ObexSession1>(obex_session1_proxy_new_for_bus_sync, path.get());
    Follow(floor, floor.session, {"source", "destination", "channel", "target", "connected"});
    Follow(floor, floor.phonebook,
           {"database-identifier", "primary-counter", "secondary-counter", "new-missed-calls",
            "folder", "fixed-image-size", "profile-version", "supported-phonebooks",
            "supported-features"});
}

void SelectPhonebook(Floor& floor) {
    ErrorPtr error;
    OpenSession(floor);
    obex_phonebook_access1_call_select_sync(floor.phonebook.get(), "int", "pb", nullptr,
                                            Out(error));
    Demand(error);
}

void BeginDownload(Floor& floor) {
    ErrorPtr error;
    TextPtr path;
    VariantPtr properties;
    SelectPhonebook(floor);
    obex_phonebook_access1_call_pull_all_sync(floor.phonebook.get(), "/tmp/phonebook.vcf",
                                              g_variant_new("a{sv}", nullptr), Out(path),
                                              Out(properties), nullptr, Out(error));
    Demand(error);
    floor.transfer = MakeProxy<ObexTransfer1>(obex_transfer1_proxy_new_for_bus_sync, path.get());
    Follow(floor, floor.transfer, {"session", "name", "type", "size", "transferred", "filename"});
    g_signal_connect(floor.transfer.get(), "notify::status", G_CALLBACK(OnStatus), &floor);
}

void List(Floor& floor) {
    ErrorPtr error;
    VariantPtr listing;
    obex_phonebook_access1_call_list_sync(floor.phonebook.get(), g_variant_new("a{sv}", nullptr),
                                          Out(listing), nullptr, Out(error));
    Demand(error);
    GVariantIter iterator;
    g_variant_iter_init(&iterator, listing.get());
    const gchar* handle = nullptr;
    const gchar* name = nullptr;
    unsigned vcards = 0;
    while (g_variant_iter_next(&iterator, "(&s&s)", &handle, &name) != FALSE) {
        ++vcards;
    }
    Say("listed " + std::to_string(vcards));
}

gboolean ListAtFirstLine(gint /*descriptor*/, GIOCondition /*condition*/, gpointer floor) {
    if (std::getchar() == '\n') List(*static_cast<Floor*>(floor));
    return G_SOURCE_REMOVE;
}

gboolean Quit(gint /*descriptor*/, GIOCondition /*condition*/, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) try {
    Floor floor;
    const auto manager = FollowObjects(floor);
    const std::string_view mode = argc > 1 ? argv[1] : "";
    const GlibPtr<GMainLoop> loop(g_main_loop_new(nullptr, FALSE));
    if (mode == "download") BeginDownload(floor);
    if (mode == "listing") {
        SelectPhonebook(floor);
        g_unix_fd_add(0, G_IO_IN, ListAtFirstLine, &floor);
    }
    g_unix_fd_add(0, G_IO_HUP, Quit, loop.get());
    Say("ready");
    g_main_loop_run(loop.get());
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
