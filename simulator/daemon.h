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

/// In place of a number of times: until `ClearFaults`.
inline constexpr unsigned kAlways = 0;

/// The stack's daemon with the phones behind it, on a bus of the caller's choice.
///
/// Objects: the client at `kClientPath`; phones at /com/veltrisonix/hci0/dev_XX_XX_XX_XX_XX_XX;
/// sessions at /com/veltrisonix/obex/client/session<N>, N counting from 0 over the daemon's life
/// (both the session and the phone book interface); transfers below their session at
/// /transfer<M>, M counting from 0 over the daemon's life. Transfers stay as long as their session.
///
/// Threads: the daemon runs in a thread of its own. Every member may be called from any thread but
/// that one, at the same time as others, and has taken effect, with its signals delivered to the
/// bus, when it returns.
///
/// Errors: `std::runtime_error` with one clear line when the bus or the name cannot be had or a
/// path or address is not known; `std::invalid_argument` when an argument is malformed (no object
/// path, no tuple where one is due).
///
/// Members that return `bool` return whether they changed anything, if nothing else is documented.
///
/// Values: every `GVariant*` parameter is consumed when floating, and otherwise only referred to.
/// A null value is refused.
class Daemon {
  public:
    /// Connects to the bus at a D-Bus address; returns when the name is owned and all is exported.
    explicit Daemon(const std::string& address, const Options& options = Options());
    /// Uses the caller's connection and leaves it open at the end. Such a daemon can `Crash`, which
    /// closes the connection, but not return afterwards.
    explicit Daemon(GDBusConnection* connection, const Options& options = Options());
    /// Leaves the bus and joins the thread. Calls still hanging get no answer.
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    [[nodiscard]] std::string BusName() const;

    // What was called. Calls to com.veltrisonix.* interfaces only, recorded when they arrive and
    // before they are acted upon, also those that a fault answers or swallows.
    [[nodiscard]] std::vector<Call> Calls() const;
    /// See `Recorder::Await`.
    std::optional<Call> AwaitCall(const std::string& method, std::chrono::milliseconds timeout);
    bool ForgetCalls();

    // Every call to the daemon's objects, those of the standard interfaces too, and what was
    // answered to it. Handlers are called in GDBus' worker thread, one at a time, for as long as
    // the subscription exists; no message is sent or received meanwhile. They must not call the
    // daemon. A call that hangs is announced as answered with `kHangs`, and again when it is
    // released.
    [[nodiscard]] Subscription OnCall(std::function<void(const Call&)> handler);
    [[nodiscard]] Subscription OnAnswer(std::function<void(const Answer&)> handler);

    // Coming and going.
    [[nodiscard]] std::vector<PhoneInfo> Phones() const;
    /// With what `AddDevice` added.
    [[nodiscard]] std::vector<PhoneInfo> Devices() const;
    /// Adds a device that has exactly these properties (a{sv}), whatever their types, and no
    /// others. A path that is in use is refused. Sessions can be made to it when it has an
    /// "Address" of type s: a phone with the seed's contents then stands behind it.
    void AddDevice(const std::string& path, GVariant* properties);
    /// A device without wishes: Address, Alias, Name and the like are given sensible values.
    void AddDevice(const std::string& path, const std::string& address, const std::string& alias);
    /// Its sessions lose their connection (announced) and go with it. What was added by
    /// `AddDevice` is forgotten, a phone may return.
    void RemoveDevice(const std::string& path);
    /// Brings back a phone that `RemoveDevice` took away.
    bool ReturnDevice(const std::string& path);
    /// Takes the client object away, and with it all sessions, without a change of their state.
    bool RemoveClient();
    bool AddClient();  ///< does nothing when it is there
    /// Gives up the bus name; the connection stays. Sessions end, as in a daemon that stops.
    bool LeaveBus();
    /// Drops the connection without a word, as a killed process does: callers still waiting are
    /// told by the bus, as soon as it notices. Sessions end.
    bool Crash();
    bool ReturnToBus();  ///< after `LeaveBus` or `Crash`; does nothing when it is there
    /// Called in the daemon's thread when the bus goes away by itself. It must not call back here.
    void OnBusLost(std::function<void()> handler);

    // Sessions and transfers.
    [[nodiscard]] std::vector<std::string> Sessions() const;   ///< paths, oldest first
    [[nodiscard]] std::vector<std::string> Transfers() const;  ///< paths, oldest first
    [[nodiscard]] std::vector<SessionInfo> DescribeSessions() const;
    [[nodiscard]] std::vector<TransferInfo> DescribeTransfers() const;
    /// Sets and announces it.
    bool SetConnectionState(const std::string& session, std::uint8_t state);
    /// Ends the session from the phone's side: state 0 is announced, the object goes.
    void CloseSession(const std::string& session);
    /// The next pulls download exactly these bytes, until `RestorePullContent`. They need no
    /// selected phone book, handle or filter that makes sense.
    void SetPullContent(const std::string& content);
    bool RestorePullContent();
    /// Makes the transfer active if it is queued, writes up to so many further bytes to its file
    /// and announces Transferred; Status too when it changes. At its end it is complete. Refused
    /// when it is already complete or in error.
    void AdvanceTransfer(const std::string& transfer, std::uint64_t bytes);
    /// Makes it active (announced) without writing.
    bool StartTransfer(const std::string& transfer);
    /// All that is left at once.
    void CompleteTransfer(const std::string& transfer);
    /// Status "error", announced; what was written stays.
    void AbortTransfer(const std::string& transfer);
    /// Whether transfers stand still, as on a lost radio link. Nothing is announced. Concerns
    /// transfers moved by rate, present and future.
    bool StallTransfers(bool stall);
    /// An object path cannot be empty on D-Bus. The nearest thing that can be sent is "/", with
    /// no transfer object behind it, in the reply to every pull while this is on.
    bool UseEmptyTransferPath(bool use);

    /// Whether the object exists, without this interface.
    [[nodiscard]] bool Lacks(const std::string& path, const std::string& interface) const;

    // What happens on a phone, by its device path or address. Clients hear of it when a call of
    // theirs brings the news, as the profile has it.
    void MissCall(const std::string& phone, const std::string& number);
    void AddContact(const std::string& phone, const std::string& name, const std::string& number);

    // Faults of calls. `method` is "Select" or "com.veltrisonix.obex.PhonebookAccess1.Select"; the
    // methods of the standard interfaces, such as GetAll and GetManagedObjects, can be named too.
    // A later fault of a method replaces the earlier.
    /// Answers with an error, so many times.
    void Refuse(const std::string& method, const std::string& error_name,
                const std::string& message, unsigned times = kAlways);
    /// Answers with this body (a tuple), of any type, without doing anything.
    void Reply(const std::string& method, GVariant* body, unsigned times = kAlways);
    /// Gives no answer until `Release`.
    void Hang(const std::string& method, unsigned times = kAlways);
    /// Answers all calls that hang, by then carrying them out, and lets later ones pass.
    bool Release();
    /// Forgets faults of calls. Calls that hang keep hanging.
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

    // Notifications. The object need not exist, the property neither; nothing else changes, so
    // that a later reading shows the old value unless it was overridden.
    void Notify(const std::string& path, const std::string& interface, const std::string& name,
                GVariant* value);
    /// Several properties (a{sv}) in one signal.
    void NotifyAll(const std::string& path, const std::string& interface, GVariant* properties);
    /// The property is announced as invalidated.
    void Invalidate(const std::string& path, const std::string& interface, const std::string& name);
    /// One signal for each of `count` values, as fast as the bus takes them; `value` is called
    /// with 0 .. count-1 in the daemon's thread.
    void Flood(const std::string& path, const std::string& interface, const std::string& name,
               std::size_t count, const std::function<GVariant*(std::size_t)>& value);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace simulator
