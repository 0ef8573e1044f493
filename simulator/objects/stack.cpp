#include "simulator/objects/stack.h"

#include <stdexcept>

namespace simulator {

Stack::Stack(const Options& options, const std::function<std::unique_ptr<Bus>()>& make_bus,
             PropertyFaults& property_faults)
    : bus_(make_bus()),
      world_{options, *bus_, property_faults, {}, false, false, {}, 0, 0},
      sessions_(world_),
      devices_(world_, sessions_) {
    AddClient();
    ReturnToBus();
}

/// Sends no InterfacesRemoved: the bus announces that the name has lost its owner.
Stack::~Stack() {
    LeaveBus();
    world_.tree.Attach(nullptr);
}

Session& Stack::GetSession(const std::string& path) {
    Session* session = sessions_.Find(path);
    if (session == nullptr) {
        throw std::runtime_error("No such session: " + path);
    }
    return *session;
}

Transfer& Stack::GetTransfer(const std::string& path) {
    Transfer* transfer = sessions_.FindTransfer(path);
    if (transfer == nullptr) {
        throw std::runtime_error("No such transfer: " + path);
    }
    return *transfer;
}

bool Stack::RemoveClient() {
    const bool changes = client_ != nullptr;
    client_.reset();
    sessions_.Drop();
    return changes;
}

bool Stack::AddClient() {
    if (client_) {
        return false;
    }
    client_ = std::make_unique<ClientObject>(world_, devices_, sessions_);
    return true;
}

bool Stack::LeaveBus() {
    const bool changes = bus_->HasName();
    if (changes) {
        bus_->DropName();
    }
    sessions_.Drop();
    return changes;
}

bool Stack::Crash() {
    const bool changes = bus_->IsOpen();
    bus_->Close();
    world_.tree.Attach(nullptr);
    sessions_.Drop();
    return changes;
}

/// Exports the objects before owning the name, so that clients that see the name find them.
bool Stack::ReturnToBus() {
    bus_->Open();
    world_.tree.Attach(bus_->connection());
    if (bus_->HasName()) {
        return false;
    }
    bus_->TakeName();
    return true;
}

}  // namespace simulator
