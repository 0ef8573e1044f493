#include "simulator/objects/device_object.h"

#include "simulator/objects/handler.h"
#include "simulator/objects/names.h"

#include <cstring>

namespace simulator {
namespace {

using morvane::VariantPtr;

constexpr char kAdapter[] = "/com/veltrisonix/hci0";
constexpr char kHandsFreeGateway[] = "0000111f-0000-1000-8000-00805f9b34fb";
constexpr const gchar* kServices[] = {kHandsFreeGateway, kPhonebookServer, nullptr};
constexpr guint32 kSmartPhone = 0x5a020c;
constexpr gint16 kUsualRssi = -48;

}  // namespace

DeviceObject::DeviceObject(World& world, std::string path, const std::string& address,
                           const std::string& alias, std::function<void()> on_disconnect)
    : world_(world),
      path_(std::move(path)),
      on_disconnect_(std::move(on_disconnect)),
      skeleton_(device1_skeleton_new()) {
    SetConstants(address, alias);
    HandleMethods();
    world_.tree.Export(path_, {G_DBUS_INTERFACE_SKELETON(skeleton_.get())});
}

DeviceObject::~DeviceObject() {
    world_.tree.Unexport(path_);
}

void DeviceObject::SetConstants(const std::string& address, const std::string& alias) {
    Device1* skeleton = skeleton_.get();
    device1_set_address(skeleton, address.c_str());
    device1_set_address_type(skeleton, "public");
    device1_set_name(skeleton, alias.c_str());
    device1_set_alias(skeleton, alias.c_str());
    device1_set_class(skeleton, kSmartPhone);
    device1_set_paired(skeleton, TRUE);
    device1_set_trusted(skeleton, TRUE);
    device1_set_role(skeleton, "central");
    device1_set_radio_capability(skeleton, "BR/EDR");
    device1_set_radios_paired(skeleton, "BR/EDR");
    device1_set_rssi(skeleton, kUsualRssi);
    device1_set_uuids(skeleton, kServices);
    device1_set_adapter(skeleton, kAdapter);
    device1_set_services_resolved(skeleton, TRUE);
    device1_set_advert_data(skeleton, g_variant_new_from_data(G_VARIANT_TYPE_BYTESTRING, "", 0,
                                                              TRUE, nullptr, nullptr));
}

void DeviceObject::HandleMethods() {
    gpointer skeleton = skeleton_.get();
    Handle<&DeviceObject::Connect>(skeleton, "handle-connect", this);
    Handle<&DeviceObject::Disconnect>(skeleton, "handle-disconnect", this);
    Handle<&DeviceObject::ConnectProfile>(skeleton, "handle-connect-profile", this);
    Handle<&DeviceObject::DisconnectProfile>(skeleton, "handle-disconnect-profile", this);
    Handle<&DeviceObject::Pair>(skeleton, "handle-pair", this);
    Handle<&DeviceObject::CancelPairing>(skeleton, "handle-cancel-pairing", this);
    Handle<&DeviceObject::SetSniffModeTimer>(skeleton, "handle-set-sniff-mode-timer", this);
    Handle<&DeviceObject::GetSniffModeTimer>(skeleton, "handle-get-sniff-mode-timer", this);
    Handle<&DeviceObject::ClearSniffModeTimer>(skeleton, "handle-clear-sniff-mode-timer", this);
    Handle<&DeviceObject::DisableSniffModeTimer>(skeleton, "handle-disable-sniff-mode-timer", this);
    Handle<&DeviceObject::SwitchRole>(skeleton, "handle-switch-role", this);
    Handle<&DeviceObject::RefreshRssi>(skeleton, "handle-refresh-rssi", this);
}

void DeviceObject::SetConnected(bool connected) {
    device1_set_connected(skeleton_.get(), connected ? TRUE : FALSE);
    Announce(skeleton_.get());
}

void DeviceObject::DemandService(const std::string& uuid) const {
    if (g_strv_contains(kServices, uuid.c_str()) == FALSE) {
        throw Refusal(kNotSupported, "No such service: " + uuid);
    }
}

VariantPtr DeviceObject::Connect() {
    SetConnected(true);
    return nullptr;
}

VariantPtr DeviceObject::Disconnect() {
    if (device1_get_connected(skeleton_.get()) == FALSE) {
        throw Refusal(kNotConnected, "Device is not connected");
    }
    on_disconnect_();
    SetConnected(false);
    return nullptr;
}

VariantPtr DeviceObject::ConnectProfile(const gchar* uuid) {
    DemandService(uuid);
    return Connect();
}

VariantPtr DeviceObject::DisconnectProfile(const gchar* uuid) {
    DemandService(uuid);
    if (std::strcmp(uuid, kPhonebookServer) == 0) {
        on_disconnect_();
    }
    return nullptr;
}

VariantPtr DeviceObject::Pair() {
    throw Refusal(kFailed, "Device is already paired");
}

VariantPtr DeviceObject::CancelPairing() {
    throw Refusal(kNotInProgress, "No pairing to cancel");
}

VariantPtr DeviceObject::SetSniffModeTimer(guint16 max, guint16 min, guint16 /*attempt*/,
                                           guint16 /*timeout*/, guint32 time) {
    if (max < min) {
        throw Refusal(kInvalidArguments, "MaxInterval is below MinInterval");
    }
    sniff_time_ = time;
    return nullptr;
}

VariantPtr DeviceObject::GetSniffModeTimer() {
    return VariantPtr(g_variant_ref_sink(g_variant_new("(u)", sniff_time_)));
}

VariantPtr DeviceObject::ClearSniffModeTimer() {
    sniff_time_ = 0;
    return nullptr;
}

VariantPtr DeviceObject::DisableSniffModeTimer() {
    return ClearSniffModeTimer();
}

VariantPtr DeviceObject::SwitchRole() {
    const bool central = std::strcmp(device1_get_role(skeleton_.get()), "central") == 0;
    device1_set_role(skeleton_.get(), central ? "peripheral" : "central");
    Announce(skeleton_.get());
    return nullptr;
}

VariantPtr DeviceObject::RefreshRssi() {
    const gint16 rssi = device1_get_rssi(skeleton_.get());
    device1_set_rssi(skeleton_.get(),
                     static_cast<gint16>(rssi == kUsualRssi ? rssi - 1 : kUsualRssi));
    Announce(skeleton_.get());
    return nullptr;
}

}  // namespace simulator
