#include "app/obex_proxy.h"

#include "client/client_proxy_context.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvane {

void ObexProxy::AllocClient(const std::string& path) {
    auto client = std::make_unique<ClientProxyContext>(path);
    {
        const LockGuard guard(contents_mutex_);
        client_.swap(client);
        replaced_clients_.push_back(std::move(client));
    }
    // A client re-added without a removal. An addition must not wait: if the menu thread has the
    // registry mutex locked, that thread destroys the replaced client before its next input.
    if (registry_mutex_.try_lock()) {
        const LockGuard guard(registry_mutex_, std::adopt_lock);
        DestroyReplacedClients();
    }
}

// `replaced` is declared before the lock so that it is destroyed after unlocking: destructors
// print.
void ObexProxy::DestroyReplacedClients() {
    std::vector<std::unique_ptr<ClientProxyContext>> replaced;
    const LockGuard guard(contents_mutex_);
    replaced.swap(replaced_clients_);
}

void ObexProxy::FreeClient() {
    const RemovalTurns::Removal removal(removal_turns_, registry_mutex_);
    TakeClient().reset();
}

std::unique_ptr<ClientProxyContext> ObexProxy::TakeClient() {
    const LockGuard guard(contents_mutex_);
    return std::move(client_);
}

void ObexProxy::AllocDevice(const std::string& path) {
    auto device = std::make_unique<ObexDeviceContext>(GetBusName(), path);
    const LockGuard guard(contents_mutex_);
    devices_.push_back(std::move(device));
}

void ObexProxy::FreeDevice(const std::string& path) {
    const RemovalTurns::Removal removal(removal_turns_, registry_mutex_);
    TakeDevices(path).clear();
}

std::vector<std::unique_ptr<ObexDeviceContext>> ObexProxy::TakeDevices(const std::string& path) {
    const LockGuard guard(contents_mutex_);
    std::vector<std::unique_ptr<ObexDeviceContext>> removed;
    const auto first_removed =
        std::stable_partition(devices_.begin(), devices_.end(),
                              [&](const auto& device) { return device->GetPathName() != path; });
    removed.assign(std::make_move_iterator(first_removed), std::make_move_iterator(devices_.end()));
    devices_.erase(first_removed, devices_.end());
    return removed;
}

ClientProxyContext* ObexProxy::Client() const {
    const LockGuard guard(contents_mutex_);
    return client_.get();
}

std::vector<const ObexDeviceContext*> ObexProxy::Devices() const {
    const LockGuard guard(contents_mutex_);
    std::vector<const ObexDeviceContext*> devices;
    std::transform(devices_.begin(), devices_.end(), std::back_inserter(devices),
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
