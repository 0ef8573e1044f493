#include "simulator/objects/client_object.h"

#include "simulator/objects/handler.h"
#include "simulator/objects/names.h"

#include <cstring>

namespace simulator {
namespace {

using morvane::VariantPtr;

void DemandPhonebookServer(GVariant* arguments) {
    GVariantIter iterator;
    g_variant_iter_init(&iterator, arguments);
    while (const VariantPtr entry{g_variant_iter_next_value(&iterator)}) {
        const gchar* key = nullptr;
        g_variant_get(entry.get(), "{&sv}", &key, nullptr);
        if (std::strcmp(key, "Target") != 0) {
            throw Refusal(kInvalidArguments, std::string("Unknown argument: ") + key);
        }
    }
    const gchar* target = nullptr;
    if (g_variant_lookup(arguments, "Target", "&s", &target) == FALSE) {
        throw Refusal(kInvalidArguments, "Argument Target of type s is missing");
    }
    if (g_ascii_strcasecmp(target, kPhonebookServer) != 0) {
        throw Refusal(kNotSupported, std::string("Target is not supported: ") + target);
    }
}

}  // namespace

ClientObject::ClientObject(World& world, const Devices& devices, Sessions& sessions)
    : world_(world),
      devices_(devices),
      sessions_(sessions),
      skeleton_(obex_client1_skeleton_new()) {
    gpointer skeleton = skeleton_.get();
    Handle<&ClientObject::CreateSession>(skeleton, "handle-create-session", this);
    Handle<&ClientObject::RemoveSession>(skeleton, "handle-remove-session", this);
    Handle<&ClientObject::SetUserId>(skeleton, "handle-set-user-id", this);
    Handle<&ClientObject::SetPassword>(skeleton, "handle-set-password", this);
    world_.tree.Export(kClientPath, {G_DBUS_INTERFACE_SKELETON(skeleton)});
}

ClientObject::~ClientObject() {
    world_.tree.Unexport(kClientPath);
}

VariantPtr ClientObject::CreateSession(const gchar* destination, GVariant* arguments) {
    DemandPhonebookServer(arguments);
    const Devices::Device* device = devices_.FindInReach(destination);
    if (device == nullptr) {
        throw Refusal(kDoesNotExist, std::string("No such device: ") + destination);
    }
    if (device->demands_authentication) {
        DemandAuthentication();
    }
    const Session& session = sessions_.Open(device->address, device->alias, device->phone);
    return VariantPtr(g_variant_ref_sink(g_variant_new("(o)", session.path().c_str())));
}

void ClientObject::DemandAuthentication() const {
    const Options& options = world_.options;
    if (user_id_ == options.user_id && password_ == options.password) {
        return;
    }
    throw Refusal(kNotAuthorized, "Wrong OBEX user id or password");
}

VariantPtr ClientObject::RemoveSession(const gchar* path) {
    if (!sessions_.Close(path)) {
        throw Refusal(kDoesNotExist, std::string("No such session: ") + path);
    }
    return nullptr;
}

VariantPtr ClientObject::SetUserId(const gchar* user_id) {
    user_id_ = user_id;
    return nullptr;
}

VariantPtr ClientObject::SetPassword(const gchar* password) {
    password_ = password;
    return nullptr;
}

}  // namespace simulator
