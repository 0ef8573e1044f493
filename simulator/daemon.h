#pragma once

#include "simulator/faults/listeners.h"
#include "simulator/faults/property_faults.h"
#include "simulator/faults/recorder.h"
#include "simulator/objects/descriptions.h"
#include "simulator/objects/names.h"
#include "simulator/objects/options.h"

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// As a number of calls: all calls until `ClearFaults`.
inline constexpr unsigned kAlways = 0;

/// The stack's daemon and the phones that it reaches, on a bus of the caller's choice.
///
/// Objects: the client at `kClientPath`; phones at /com/veltrisonix/hci0/dev_XX_XX_XX_XX_XX_XX;
/// sessions at /com/veltrisonix/obex/client/session<N> (both the session and the phone book
/// interface); transfers below their session at /transfer<M>. N and M count from 0 over the
/// daemon's lifetime. A transfer exists as long as its session.
///
/// Threads: the daemon runs in a thread of its own. Every member may be called from any other
/// thread, also concurrently. When it returns, it has taken effect and the bus has received its
/// signals.
///
/// Errors: `std::runtime_error` with one line if the daemon cannot connect to the bus or own the
/// name, or for an unknown path or address; `std::invalid_argument` for a malformed argument (not
/// an object path, not a tuple).
///
/// Members that return `bool` return whether they changed anything, if nothing else is documented.
///
/// Values: a floating `GVariant*` argument is consumed; of others the daemon takes a reference. A
/// null value is refused.
class Daemon {
  public:
    /// Connects to the bus at a D-Bus address, exports all objects and owns the name.
    explicit Daemon(const std::string& address, const Options& options = Options());
    /// Uses the caller's connection, which the destructor leaves open. `Crash` closes it;
    /// `ReturnToBus` fails afterwards.
    explicit Daemon(GDBusConnection* connection, const Options& options = Options());
    /// Disconnects and joins the thread. Calls that hang get no reply.
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    [[nodiscard]] std::string BusName() const;

    // Recorded calls: those of com.veltrisonix.* interfaces only, recorded on arrival, including
    // calls that a fault refuses, answers or lets hang.
    [[nodiscard]] std::vector<Call> Calls() const;
    /// See `Recorder::Await`.
    std::optional<Call> AwaitCall(const std::string& method, std::chrono::milliseconds timeout);
    bool ForgetCalls();

    // Every call to the daemon's objects, also of the standard interfaces, and its answer. Handlers
    // are called in GDBus' worker thread, one at a time, for the lifetime of the subscription, and
    // block sending and receiving. They must not call the daemon. A call that hangs is reported
    // with `kHangs`, and again after its release.
    [[nodiscard]] Subscription OnCall(std::function<void(const Call&)> handler);
    [[nodiscard]] Subscription OnAnswer(std::function<void(const Answer&)> handler);

    // Devices, the client object and the bus name.
    [[nodiscard]] std::vector<PhoneInfo> Phones() const;
    /// The phones and the devices that `AddDevice` added.
    [[nodiscard]] std::vector<PhoneInfo> Devices() const;
    /// Adds a device that has exactly these properties (a{sv}), whatever their types, and no
    /// others. A path that is in use is refused. Sessions can be made to it when it has an
    /// "Address" of type s: the simulator then generates a phone for it from the seed.
    void AddDevice(const std::string& path, GVariant* properties);
    /// Adds a device with default values for properties other than its address and alias.
    void AddDevice(const std::string& path, const std::string& address, const std::string& alias);
    /// Removes a device and its sessions, whose loss of connection is announced. A device that
    /// `AddDevice` added is deleted; a phone can return.
    void RemoveDevice(const std::string& path);
    /// Adds a phone again that `RemoveDevice` has removed.
    bool ReturnDevice(const std::string& path);
    /// Removes the client object with all sessions, without announcing a state.
    bool RemoveClient();
    bool AddClient();  ///< does nothing if it exists
    /// Releases the bus name without disconnecting. Ends sessions, like a daemon that stops.
    bool LeaveBus();
    /// Closes the connection without releasing the name, like a killed process. The bus replies
    /// with an error to waiting callers. Ends sessions.
    bool Crash();
    bool ReturnToBus();  ///< after `LeaveBus` or `Crash`; otherwise does nothing
    /// Called in the daemon's thread when the connection is lost. It must not call the daemon.
    void OnBusLost(std::function<void()> handler);

    // Sessions and transfers.
    [[nodiscard]] std::vector<std::string> Sessions() const;   ///< paths, oldest first
    [[nodiscard]] std::vector<std::string> Transfers() const;  ///< paths, oldest first
    [[nodiscard]] std::vector<SessionInfo> DescribeSessions() const;
    [[nodiscard]] std::vector<TransferInfo> DescribeTransfers() const;
    /// Sets and announces the state.
    bool SetConnectionState(const std::string& session, std::uint8_t state);
    /// Ends the session from the phone's side: announces state 0 and removes the object.
    void CloseSession(const std::string& session);
    /// Pulls download exactly these bytes until `RestorePullContent`, whatever the selected phone
    /// book, handle and filters.
    void SetPullContent(const std::string& content);
    bool RestorePullContent();
    /// Makes the transfer active if it is queued, writes up to `bytes` further bytes to its file,
    /// and announces Transferred, and Status if it changes. After its last byte the transfer is
    /// complete. Refused if it is already complete or in error.
    void AdvanceTransfer(const std::string& transfer, std::uint64_t bytes);
    /// Makes the transfer active and announces that, without writing.
    bool StartTransfer(const std::string& transfer);
    /// Writes all remaining bytes.
    void CompleteTransfer(const std::string& transfer);
    /// Announces status "error"; keeps the bytes written.
    void AbortTransfer(const std::string& transfer);
    /// Stops the progress of transfers, as on a lost radio link, or lets it continue. Announces
    /// nothing. Affects present and future transfers at `rate`.
    bool StallTransfers(bool stall);
    /// If `use`, replies to pulls contain the path "/", and no transfer is created. (D-Bus does not
    /// allow an empty object path.)
    bool UseEmptyTransferPath(bool use);

    /// Whether the object exists but lacks this interface.
    [[nodiscard]] bool Lacks(const std::string& path, const std::string& interface) const;

    // Events on a phone, by its device path or address. The profile reports them to a client only
    // in the reply to its next call.
    void MissCall(const std::string& phone, const std::string& number);
    void AddContact(const std::string& phone, const std::string& name, const std::string& number);

    // Faults of calls. `method` is "Select" or "com.veltrisonix.obex.PhonebookAccess1.Select"; the
    // methods of the standard interfaces, such as GetAll and GetManagedObjects, can be named too.
    // A later fault of a method replaces the earlier.
    /// Answers with an error, for `times` calls.
    void Refuse(const std::string& method, const std::string& error_name,
                const std::string& message, unsigned times = kAlways);
    /// Answers with this body (a tuple), of any type, without doing anything.
    void Reply(const std::string& method, GVariant* body, unsigned times = kAlways);
    /// Gives no answer until `Release`.
    void Hang(const std::string& method, unsigned times = kAlways);
    /// Executes and answers all calls that hang; later ones do not hang.
    bool Release();
    /// Removes faults of calls. Calls that hang continue to hang.
    bool ClearFaults();

    // Faults of properties, in every way in which a client can read them: Get, GetAll,
    // GetManagedObjects, InterfacesAdded, the dictionary of a pull's reply and the changes that the
    // daemon announces by itself. Setting a fault announces nothing.
    /// `path` may be `kAnyPath`; the value may be of any type.
    void OverrideProperty(const std::string& path, const std::string& interface,
                          const std::string& name, GVariant* value);
    void HideProperty(const std::string& path, const std::string& interface,
                      const std::string& name);
    bool ClearPropertyFaults();

    // Notifications. Neither the object nor the property needs to exist. Nothing else changes: a
    // later read returns the old value unless it is overridden.
    void Notify(const std::string& path, const std::string& interface, const std::string& name,
                GVariant* value);
    /// Several properties (a{sv}) in one signal.
    void NotifyAll(const std::string& path, const std::string& interface, GVariant* properties);
    /// The property is announced as invalidated.
    void Invalidate(const std::string& path, const std::string& interface, const std::string& name);
    /// One signal for each of `count` values, as fast as the bus accepts them; `value` is called
    /// with 0 .. count-1 in the daemon's thread.
    void Flood(const std::string& path, const std::string& interface, const std::string& name,
               std::size_t count, const std::function<GVariant*(std::size_t)>& value);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace simulator
