#include "app/obex_proxy.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvane {

void ObexProxy::AllocClient(const std::string& path) {
    auto client = std::make_unique<ClientProxyContext>(path);
    {
        const auto contents = contents_.Lock();
        contents->client.swap(client);
        if (client) {
            contents->replaced_clients.push_back(std::move(client));
        }
    }
    // A client announced twice without going in between: an addition does not wait, so if the menu
    // thread is inside a client, that thread destroys the replaced one before its next input.
    const MenuLock lock(registry_mutex_, std::try_to_lock);
    if (lock.owns_lock()) {
        DestroyReplacedClients();
    }
}

// What goes is declared before the hold, here and below, and so destroyed after it: it prints.
// The registry mutex is held.
void ObexProxy::DestroyReplacedClients() {
    std::vector<std::unique_ptr<ClientProxyContext>> replaced;
    const auto contents = contents_.Lock();
    replaced.swap(contents->replaced_clients);
}

void ObexProxy::FreeClient() {
    const RemovalTurns::Removal removal(removal_turns_, registry_mutex_);
    std::unique_ptr<ClientProxyContext> client;
    const auto contents = contents_.Lock();
    client.swap(contents->client);
}

void ObexProxy::AllocDevice(const std::string& path) {
    auto device = std::make_unique<ObexDeviceContext>(GetBusName(), path);
    const auto contents = contents_.Lock();
    contents->devices.push_back(std::move(device));
}

void ObexProxy::FreeDevice(const std::string& path) {
    const RemovalTurns::Removal removal(removal_turns_, registry_mutex_);
    std::vector<std::unique_ptr<ObexDeviceContext>> removed;
    const auto contents = contents_.Lock();
    const auto first_removed =
        std::stable_partition(contents->devices.begin(), contents->devices.end(),
                              [&](const auto& device) { return device->GetPathName() != path; });
    removed.assign(std::make_move_iterator(first_removed),
                   std::make_move_iterator(contents->devices.end()));
    contents->devices.erase(first_removed, contents->devices.end());
}

ClientProxyContext* ObexProxy::Client() const {
    const auto contents = contents_.Lock();
    return contents->client.get();
}

std::vector<const ObexDeviceContext*> ObexProxy::Devices() const {
    const auto contents = contents_.Lock();
    std::vector<const ObexDeviceContext*> devices;
    std::transform(contents->devices.begin(), contents->devices.end(), std::back_inserter(devices),
                   [](const auto& device) { return device.get(); });
    return devices;
}

bool ObexProxy::IsClientValid() const {
    return IsRunning() && Client() != nullptr;
}

bool ObexProxy::IsValid() const {
    const ClientProxyContext* const client = Client();
    return IsRunning() && client != nullptr && client->IsValid();
}

bool ObexProxy::IsCurrent(const PhonebookContext* phonebook) const {
    const ClientProxyContext* const client = Client();
    return client != nullptr && client->Phonebook() == phonebook;
}

}  // namespace morvane
