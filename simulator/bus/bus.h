#pragma once

#include "interfaces/glib_ptr.h"
#include "simulator/faults/message_filter.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace simulator {

/// The daemon's connection to the bus and its bus name. Used in the daemon's thread only, except
/// for `OnLost`'s handler.
class Bus {
  public:
    /// `Open` will connect to this address.
    Bus(std::string address, std::string name, std::shared_ptr<Instruments> instruments);
    /// Uses an existing connection, which the destructor leaves open.
    Bus(GDBusConnection* connection, std::string name, std::shared_ptr<Instruments> instruments);
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] GDBusConnection* connection() const { return connection_.get(); }
    [[nodiscard]] bool IsOpen() const;
    [[nodiscard]] bool HasName() const { return has_name_; }

    // These throw `std::runtime_error` with one line that names the address or bus name that
    // failed.
    void Open();
    void TakeName();

    void DropName();
    /// Closes the connection without releasing the name first.
    void Close();
    /// Waits until the bus has processed all messages sent. Flushing the socket is not enough:
    /// messages that others send later over their own sockets could arrive first.
    void Settle();
    void OnLost(std::function<void()> handler) { on_lost_ = std::move(handler); }

    /// Sends a PropertiesChanged signal; `kSentAsItStands` exempts it from property faults.
    void EmitChanges(const std::string& path, const std::string& interface, GVariant* changed,
                     const std::vector<std::string>& invalidated = {},
                     GDBusMessageFlags flags = G_DBUS_MESSAGE_FLAGS_NONE);

    /// Executes delayed calls as if they had arrived now, and replies to their callers. `done`
    /// is called after the last reply.
    void CarryOut(std::vector<MessagePtr> calls, std::function<void()> done);

  private:
    void Use(morvane::GlibPtr<GDBusConnection> connection);
    void Forget();
    guint32 AskForName(const char* method, GVariant* arguments);

    const std::string address_;  // empty if the connection is the caller's
    const std::string name_;
    const std::shared_ptr<Instruments> instruments_;
    morvane::GlibPtr<GDBusConnection> connection_;
    guint filter_ = 0;
    gulong closed_handler_ = 0;
    bool has_name_ = false;
    std::function<void()> on_lost_;
};

}  // namespace simulator
