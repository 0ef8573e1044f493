#pragma once

#include "simulator/objects/descriptions.h"
#include "simulator/objects/phonebook_access.h"
#include "simulator/objects/world.h"

#include <obex-session1.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace simulator {

/// A client's open connection to the phone book server of one phone.
class Session {
  public:
    Session(World& world, std::string path, std::string destination, std::string alias,
            std::shared_ptr<Phone> phone);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] const std::string& destination() const { return destination_; }
    [[nodiscard]] PhonebookAccess& access() { return access_; }

    [[nodiscard]] SessionInfo Describe() const;

    /// Returns whether the state has changed.
    bool SetConnectionState(std::uint8_t state);
    /// Simulates loss of the connection: transfers fail, then the state changes.
    void Disconnect();

  private:
    morvane::VariantPtr GetCapabilities();

    World& world_;
    const std::string path_;
    const std::string destination_;
    const std::string alias_;
    const morvane::GlibPtr<ObexSession1> skeleton_;
    PhonebookAccess access_;
};

/// The open sessions, which own their transfers.
class Sessions {
  public:
    explicit Sessions(World& world) : world_(world) {}

    Session& Open(const std::string& destination, const std::string& alias,
                  std::shared_ptr<Phone> phone);
    /// Null when there is no such session.
    [[nodiscard]] Session* Find(const std::string& path);
    [[nodiscard]] Transfer* FindTransfer(const std::string& path);
    /// Ends a session that the client removes; returns whether it existed.
    bool Close(const std::string& path);
    /// Ends all sessions to a phone that is out of reach.
    void LoseDestination(const std::string& destination);
    /// Ends all sessions without announcing a state.
    void Drop() { sessions_.clear(); }

    [[nodiscard]] std::vector<SessionInfo> Describe() const;            ///< oldest first
    [[nodiscard]] std::vector<TransferInfo> DescribeTransfers() const;  ///< oldest first

  private:
    World& world_;
    std::vector<std::unique_ptr<Session>> sessions_;  // oldest first
};

}  // namespace simulator
