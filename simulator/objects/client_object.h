#pragma once

#include "simulator/objects/devices.h"
#include "simulator/objects/session.h"
#include "simulator/objects/world.h"

#include <obex-client1.h>

#include <string>

namespace simulator {

/// The object with which clients open and close sessions.
class ClientObject {
  public:
    ClientObject(World& world, const Devices& devices, Sessions& sessions);
    ~ClientObject();
    ClientObject(const ClientObject&) = delete;
    ClientObject& operator=(const ClientObject&) = delete;

  private:
    using Reply = morvane::VariantPtr;

    Reply CreateSession(const gchar* destination, GVariant* arguments);
    Reply RemoveSession(const gchar* path);
    Reply SetUserId(const gchar* user_id);
    Reply SetPassword(const gchar* password);

    void DemandAuthentication() const;

    World& world_;
    const Devices& devices_;
    Sessions& sessions_;
    const morvane::GlibPtr<ObexClient1> skeleton_;
    std::string user_id_;
    std::string password_;
};

}  // namespace simulator
