#pragma once

#include "console/mutex.h"
#include "simulator/faults/call_faults.h"
#include "simulator/faults/listeners.h"
#include "simulator/faults/property_faults.h"
#include "simulator/faults/recorder.h"

#include <gio/gio.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace simulator {

/// Recorder and faults of a daemon's messages. Outlives its connections.
struct Instruments {
    Recorder recorder;
    CallFaults call_faults;
    PropertyFaults property_faults;
    // Both are called in GDBus' worker thread.
    Listeners<Call> calls;
    Listeners<Answer> answers;
};

/// Exempts a signal from property faults. The flag has no meaning in D-Bus signals.
inline constexpr GDBusMessageFlags kSentAsItStands = G_DBUS_MESSAGE_FLAGS_NO_AUTO_START;

/// Filters messages between a connection and its exported objects, in GDBus' worker thread.
class MessageFilter {
  public:
    /// Installs a filter; returns its id for `g_dbus_connection_remove_filter`.
    static guint Install(GDBusConnection* connection, std::shared_ptr<Instruments> instruments);

    explicit MessageFilter(std::shared_ptr<Instruments> instruments)
        : instruments_(std::move(instruments)) {}

  private:
    using CallId = std::pair<std::string, guint32>;  // caller, serial
    /// A call that has not been answered yet.
    struct Pending {
        Call call;
        bool is_released = false;     ///< the reply is first sent to the connection itself
        const char* fault = nullptr;  ///< name of the fault's command; null if no fault applies
        bool hangs = false;
        bool reads_objects = false;    ///< the call is GetManagedObjects
        bool reads_interface = false;  ///< the call is GetAll, of this interface:
        std::string interface;
    };

    static GDBusMessage* Filter(GDBusConnection* connection, GDBusMessage* message,
                                gboolean incoming, gpointer self);

    MessagePtr OnCall(GDBusConnection* connection, MessagePtr call);
    FaultyAnswer AnswerFaultily(GDBusMessage* call, const Call& description);
    FaultyAnswer AnswerGet(GDBusMessage* call);
    void Remember(GDBusMessage* call, Pending pending);
    std::optional<Pending> TakeAnswered(GDBusMessage* reply);

    MessagePtr OnOutgoing(MessagePtr message);
    MessagePtr OnReply(MessagePtr reply);
    void AnnounceAnswer(GDBusMessage* reply, const Pending& answered) const;
    morvane::VariantPtr EditReply(GDBusMessage* reply, const Pending& answered) const;
    morvane::VariantPtr EditSignal(GDBusMessage* signal);
    morvane::VariantPtr EditObjects(GVariant* objects) const;
    morvane::VariantPtr EditInterfaces(const std::string& path, GVariant* interfaces) const;
    morvane::VariantPtr EditChanges(const std::string& path, GVariant* body) const;

    const std::shared_ptr<Instruments> instruments_;
    morvane::Mutex mutex_;
    std::map<CallId, Pending> pending_ MORVANE_GUARDED_BY(mutex_);
};

}  // namespace simulator
