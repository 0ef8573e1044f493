#include "simulator/objects/session.h"

#include "simulator/objects/handler.h"
#include "simulator/objects/names.h"

#include <algorithm>
#include <map>

namespace simulator {
namespace {

using morvane::VariantPtr;

constexpr char kPathPrefix[] = "/com/veltrisonix/obex/client/session";
constexpr char kSource[] = "02:00:5E:00:00:01";
constexpr guint16 kChannel = 19;
constexpr char kCapabilities[] =
    "<?xml version=\"1.0\"?>\n"
    "<!DOCTYPE Capability SYSTEM \"obex-capability.dtd\">\n"
    "<Capability Version=\"1.0\"><General><Manufacturer>Morvane</Manufacturer>"
    "<Model>Simulated phone</Model></General></Capability>\n";

}  // namespace

Session::Session(World& world, std::string path, std::string destination, std::string alias,
                 std::shared_ptr<Phone> phone)
    : world_(world),
      path_(std::move(path)),
      destination_(std::move(destination)),
      alias_(std::move(alias)),
      skeleton_(obex_session1_skeleton_new()),
      access_(world, std::move(phone), path_, [this] {
          return obex_session1_get_connection_state(skeleton_.get()) == kConnected;
      }) {
    ObexSession1* skeleton = skeleton_.get();
    obex_session1_set_source(skeleton, kSource);
    obex_session1_set_destination(skeleton, destination_.c_str());
    obex_session1_set_channel(skeleton, kChannel);
    obex_session1_set_target(skeleton, kPhonebookServer);
    obex_session1_set_root(skeleton, "/");
    obex_session1_set_connection_state(skeleton, world_.options.connection_state);
    Handle<&Session::GetCapabilities>(skeleton, "handle-get-capabilities", this);
    world_.tree.Export(path_, {G_DBUS_INTERFACE_SKELETON(skeleton), access_.skeleton()});
}

Session::~Session() {
    world_.tree.Unexport(path_);
}

VariantPtr Session::GetCapabilities() {
    return VariantPtr(g_variant_ref_sink(g_variant_new("(s)", kCapabilities)));
}

SessionInfo Session::Describe() const {
    return {path_, obex_session1_get_connection_state(skeleton_.get()), alias_, destination_};
}

bool Session::SetConnectionState(std::uint8_t state) {
    const bool changes = obex_session1_get_connection_state(skeleton_.get()) != state;
    obex_session1_set_connection_state(skeleton_.get(), state);
    Announce(skeleton_.get());
    return changes;
}

void Session::Disconnect() {
    access_.AbortTransfers();
    SetConnectionState(kDisconnected);
}

Session& Sessions::Open(const std::string& destination, const std::string& alias,
                        std::shared_ptr<Phone> phone) {
    sessions_.push_back(
        std::make_unique<Session>(world_, kPathPrefix + std::to_string(world_.next_session++),
                                  destination, alias, std::move(phone)));
    return *sessions_.back();
}

Session* Sessions::Find(const std::string& path) {
    for (const std::unique_ptr<Session>& session : sessions_) {
        if (session->path() == path) {
            return session.get();
        }
    }
    return nullptr;
}

Transfer* Sessions::FindTransfer(const std::string& path) {
    for (const std::unique_ptr<Session>& session : sessions_) {
        for (const std::unique_ptr<Transfer>& transfer : session->access().transfers()) {
            if (transfer->path() == path) {
                return transfer.get();
            }
        }
    }
    return nullptr;
}

bool Sessions::Close(const std::string& path) {
    const auto found = std::find_if(sessions_.begin(), sessions_.end(),
                                    [&path](const auto& one) { return one->path() == path; });
    if (found == sessions_.end()) {
        return false;
    }
    (*found)->access().AbortTransfers();
    sessions_.erase(found);
    return true;
}

void Sessions::LoseDestination(const std::string& destination) {
    for (const std::unique_ptr<Session>& session : sessions_) {
        if (session->destination() == destination) {
            session->Disconnect();
        }
    }
    sessions_.erase(std::remove_if(sessions_.begin(), sessions_.end(),
                                   [&destination](const auto& session) {
                                       return session->destination() == destination;
                                   }),
                    sessions_.end());
}

std::vector<SessionInfo> Sessions::Describe() const {
    std::vector<SessionInfo> sessions;
    sessions.reserve(sessions_.size());
    for (const std::unique_ptr<Session>& session : sessions_) {
        sessions.push_back(session->Describe());
    }
    return sessions;
}

std::vector<TransferInfo> Sessions::DescribeTransfers() const {
    std::map<unsigned, TransferInfo> by_number;
    for (const std::unique_ptr<Session>& session : sessions_) {
        for (const std::unique_ptr<Transfer>& transfer : session->access().transfers()) {
            by_number.emplace(transfer->number(), transfer->Describe());
        }
    }
    std::vector<TransferInfo> transfers;
    transfers.reserve(by_number.size());
    for (auto& [number, transfer] : by_number) {
        transfers.push_back(std::move(transfer));
    }
    return transfers;
}

}  // namespace simulator
