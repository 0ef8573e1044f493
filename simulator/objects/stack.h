#pragma once

#include "simulator/bus/bus.h"
#include "simulator/objects/client_object.h"
#include "simulator/objects/devices.h"
#include "simulator/objects/session.h"
#include "simulator/objects/world.h"

#include <functional>
#include <memory>
#include <string>

namespace simulator {

/// The daemon's objects and its bus connection. Used in the daemon's thread only.
class Stack {
  public:
    /// Exports all objects and owns the name; throws `std::runtime_error` on failure.
    Stack(const Options& options, const std::function<std::unique_ptr<Bus>()>& make_bus,
          PropertyFaults& property_faults);
    ~Stack();
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    Bus& bus() { return *bus_; }
    World& world() { return world_; }
    Devices& devices() { return devices_; }
    Sessions& sessions() { return sessions_; }
    // These throw `std::runtime_error` when there is none.
    Session& GetSession(const std::string& path);
    Transfer& GetTransfer(const std::string& path);

    // These return whether they changed anything.
    bool RemoveClient();
    bool AddClient();
    bool LeaveBus();
    bool Crash();
    bool ReturnToBus();

  private:
    const std::unique_ptr<Bus> bus_;
    World world_;
    Sessions sessions_;
    Devices devices_;
    std::unique_ptr<ClientObject> client_;
};

}  // namespace simulator
