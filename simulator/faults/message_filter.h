#pragma once

#include "console/mutex.h"
#include "simulator/faults/call_faults.h"
#include "simulator/faults/property_faults.h"
#include "simulator/faults/recorder.h"

#include <gio/gio.h>

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace simulator {

/// What looks at, and meddles with, the messages of a daemon. Outlives its connections.
struct Instruments {
    Recorder recorder;
    CallFaults call_faults;
    PropertyFaults property_faults;
};

/// A signal with this flag, which means nothing on a signal, is sent as it stands.
inline constexpr GDBusMessageFlags kSentAsItStands = G_DBUS_MESSAGE_FLAGS_NO_AUTO_START;

/// Stands between a connection and the objects exported on it. Runs in GDBus' worker thread.
class MessageFilter {
  public:
    /// Installs a filter; returns its id for `g_dbus_connection_remove_filter`.
    static guint Install(GDBusConnection* connection, std::shared_ptr<Instruments> instruments);

    explicit MessageFilter(std::shared_ptr<Instruments> instruments)
        : instruments_(std::move(instruments)) {}

  private:
    /// A reading of properties that has not been answered yet: who asked, and for what.
    using Question = std::pair<std::string, guint32>;  // caller, serial
    struct Subject {
        std::string path;
        std::string interface;
        bool all_objects;
    };

    static GDBusMessage* Filter(GDBusConnection* connection, GDBusMessage* message,
                                gboolean incoming, gpointer self);

    MessagePtr OnCall(GDBusConnection* connection, MessagePtr call);
    MessagePtr AnswerFaultily(GDBusMessage* call, const Call& description, bool& hangs);
    MessagePtr AnswerGet(GDBusMessage* call);
    void Remember(GDBusMessage* call);

    MessagePtr OnOutgoing(MessagePtr message);
    morvane::VariantPtr EditReply(GDBusMessage* reply);
    morvane::VariantPtr EditSignal(GDBusMessage* signal);
    morvane::VariantPtr EditObjects(GVariant* objects) const;
    morvane::VariantPtr EditInterfaces(const std::string& path, GVariant* interfaces) const;
    morvane::VariantPtr EditChanges(const std::string& path, GVariant* body) const;

    const std::shared_ptr<Instruments> instruments_;
    morvane::Mutex mutex_;
    std::map<Question, Subject> questions_ MORVANE_GUARDED_BY(mutex_);
};

}  // namespace simulator
