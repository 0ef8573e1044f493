#pragma once

#include "simulator/objects/world.h"

#include <device1.h>

#include <functional>
#include <string>

namespace simulator {

/// The D-Bus object of a remote device that is in reach.
class DeviceObject {
  public:
    /// `on_disconnect` is called when a client ends the connection to the device.
    DeviceObject(World& world, std::string path, const std::string& address,
                 const std::string& alias, std::function<void()> on_disconnect);
    ~DeviceObject();
    DeviceObject(const DeviceObject&) = delete;
    DeviceObject& operator=(const DeviceObject&) = delete;

  private:
    using Reply = morvane::VariantPtr;

    Reply Connect();
    Reply Disconnect();
    Reply ConnectProfile(const gchar* uuid);
    Reply DisconnectProfile(const gchar* uuid);
    Reply Pair();
    Reply CancelPairing();
    Reply SetSniffModeTimer(guint16 max, guint16 min, guint16 attempt, guint16 timeout,
                            guint32 time);
    Reply GetSniffModeTimer();
    Reply ClearSniffModeTimer();
    Reply DisableSniffModeTimer();
    Reply SwitchRole();
    Reply RefreshRssi();

    void HandleMethods();
    void SetConstants(const std::string& address, const std::string& alias);
    void SetConnected(bool connected);
    void DemandService(const std::string& uuid) const;

    World& world_;
    const std::string path_;
    const std::function<void()> on_disconnect_;
    const morvane::GlibPtr<Device1> skeleton_;
    guint32 sniff_time_ = 0;
};

}  // namespace simulator
