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

/// Without a farewell for each object: the bus tells that the name has gone.
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

void Stack::RemoveClient() {
    client_.reset();
    sessions_.Drop();
}

void Stack::AddClient() {
    if (!client_) {
        client_ = std::make_unique<ClientObject>(world_, devices_, sessions_);
    }
}

void Stack::LeaveBus() {
    if (bus_->HasName()) {
        bus_->DropName();
    }
    sessions_.Drop();
}

void Stack::Crash() {
    bus_->Close();
    world_.tree.Attach(nullptr);
    sessions_.Drop();
}

/// The objects are there before the name is, so that whoever sees the name finds them.
void Stack::ReturnToBus() {
    bus_->Open();
    world_.tree.Attach(bus_->connection());
    if (!bus_->HasName()) {
        bus_->TakeName();
    }
}

}  // namespace simulator
