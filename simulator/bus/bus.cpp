#include "simulator/bus/bus.h"

#include "simulator/bus/connect.h"

#include <stdexcept>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::GlibPtr;
using morvane::Out;
using morvane::VariantPtr;

constexpr char kBusName[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";
constexpr guint32 kDoNotQueue = 4;
constexpr guint32 kPrimaryOwner = 1;
constexpr guint32 kAlreadyOwner = 4;

/// A delayed call, sent to our own objects.
struct HeldCall {
    MessagePtr call;
    std::shared_ptr<void> batch;  // releasing the last reference finishes the batch
};

/// Null when file descriptors in the message cannot be duplicated.
MessagePtr Redirect(GDBusMessage* message, const gchar* destination) {
    MessagePtr copy(g_dbus_message_copy(message, nullptr));
    if (!copy) {
        return nullptr;
    }
    g_dbus_message_set_sender(copy.get(), nullptr);
    g_dbus_message_set_destination(copy.get(), destination);
    g_dbus_message_set_serial(copy.get(), 0);
    return copy;
}

void ForwardAnswer(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<HeldCall> held(static_cast<HeldCall*>(data));
    GDBusConnection* connection = G_DBUS_CONNECTION(source);
    ErrorPtr error;
    const MessagePtr answer(
        g_dbus_connection_send_message_with_reply_finish(connection, result, Out(error)));
    if (!answer) {
        return;  // the connection is closed: the caller gets no reply
    }
    const MessagePtr forward = Redirect(answer.get(), g_dbus_message_get_sender(held->call.get()));
    if (!forward) {
        return;
    }
    g_dbus_message_set_reply_serial(forward.get(), g_dbus_message_get_serial(held->call.get()));
    g_dbus_connection_send_message(connection, forward.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                   nullptr, nullptr);
    g_dbus_connection_flush_sync(connection, nullptr, nullptr);
}

}  // namespace

Bus::Bus(std::string address, std::string name, std::shared_ptr<Instruments> instruments)
    : address_(std::move(address)), name_(std::move(name)), instruments_(std::move(instruments)) {}

Bus::Bus(GDBusConnection* connection, std::string name, std::shared_ptr<Instruments> instruments)
    : name_(std::move(name)), instruments_(std::move(instruments)) {
    Use(GlibPtr<GDBusConnection>(static_cast<GDBusConnection*>(g_object_ref(connection))));
}

Bus::~Bus() {
    if (!connection_) {
        return;
    }
    if (has_name_) {
        DropName();
    }
    if (!address_.empty()) {
        Close();
    }
    Forget();
}

bool Bus::IsOpen() const {
    return connection_ && g_dbus_connection_is_closed(connection_.get()) == FALSE;
}

void Bus::Open() {
    if (IsOpen()) {
        return;
    }
    if (address_.empty()) {
        throw std::runtime_error("The connection was closed and is not ours");
    }
    Use(Connect(address_));
}

void Bus::Use(GlibPtr<GDBusConnection> connection) {
    Forget();
    connection_ = std::move(connection);
    filter_ = MessageFilter::Install(connection_.get(), instruments_);
    const auto on_closed = +[](GDBusConnection*, gboolean by_peer, GError*, gpointer self) {
        const auto& handler = static_cast<Bus*>(self)->on_lost_;
        if (by_peer != FALSE && handler) {
            handler();
        }
    };
    closed_handler_ = g_signal_connect(connection_.get(), "closed", G_CALLBACK(on_closed), this);
}

void Bus::Forget() {
    if (!connection_) {
        return;
    }
    g_dbus_connection_remove_filter(connection_.get(), filter_);
    g_signal_handler_disconnect(connection_.get(), closed_handler_);
    connection_.reset();
}

guint32 Bus::AskForName(const char* method, GVariant* arguments) {
    ErrorPtr error;
    const VariantPtr reply(g_dbus_connection_call_sync(
        connection_.get(), kBusName, kBusPath, "org.freedesktop.DBus", method, arguments,
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, Out(error)));
    if (!reply) {
        throw std::runtime_error("Cannot own the name " + name_ + ": " + error->message);
    }
    guint32 result = 0;
    g_variant_get(reply.get(), "(u)", &result);
    return result;
}

void Bus::TakeName() {
    const guint32 result =
        AskForName("RequestName", g_variant_new("(su)", name_.c_str(), kDoNotQueue));
    has_name_ = result == kPrimaryOwner || result == kAlreadyOwner;
    if (!has_name_) {
        throw std::runtime_error("Cannot own the name " + name_ + ": it is in use");
    }
}

void Bus::DropName() {
    has_name_ = false;
    try {
        AskForName("ReleaseName", g_variant_new("(s)", name_.c_str()));
        // NOLINTNEXTLINE(bugprone-empty-catch): a lost connection owns no name
    } catch (const std::runtime_error&) {
    }
}

void Bus::Close() {
    has_name_ = false;
    if (IsOpen()) {
        g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    }
}

void Bus::Settle() {
    if (!IsOpen()) {
        return;
    }
    const VariantPtr answer(g_dbus_connection_call_sync(
        connection_.get(), kBusName, kBusPath, "org.freedesktop.DBus.Peer", "Ping", nullptr,
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
}

void Bus::EmitChanges(const std::string& path, const std::string& interface, GVariant* changed,
                      const std::vector<std::string>& invalidated, GDBusMessageFlags flags) {
    GVariantBuilder names;
    g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
    for (const std::string& name : invalidated) {
        g_variant_builder_add(&names, "s", name.c_str());
    }
    const MessagePtr signal(g_dbus_message_new_signal(
        path.c_str(), "org.freedesktop.DBus.Properties", "PropertiesChanged"));
    g_dbus_message_set_body(signal.get(),
                            g_variant_new("(s@a{sv}as)", interface.c_str(), changed, &names));
    g_dbus_message_set_flags(signal.get(), static_cast<GDBusMessageFlags>(
                                               g_dbus_message_get_flags(signal.get()) | flags));
    g_dbus_connection_send_message(connection_.get(), signal.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                   nullptr, nullptr);
}

void Bus::CarryOut(std::vector<MessagePtr> calls, std::function<void()> done) {
    const std::shared_ptr<void> batch(nullptr, [done = std::move(done)](void*) { done(); });
    for (MessagePtr& call : calls) {
        const MessagePtr copy =
            Redirect(call.get(), g_dbus_connection_get_unique_name(connection_.get()));
        if (!copy) {
            continue;
        }
        auto held = std::make_unique<HeldCall>(HeldCall{std::move(call), batch});
        g_dbus_connection_send_message_with_reply(connection_.get(), copy.get(),
                                                  G_DBUS_SEND_MESSAGE_FLAGS_NONE, G_MAXINT, nullptr,
                                                  nullptr, ForwardAnswer, held.release());
    }
}

}  // namespace simulator
