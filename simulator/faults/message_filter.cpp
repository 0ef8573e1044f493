#include "simulator/faults/message_filter.h"

#include <cstring>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::Own;
using morvane::TextPtr;
using morvane::VariantPtr;

constexpr char kOwnInterfaces[] = "com.veltrisonix.";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr char kObjectManager[] = "org.freedesktop.DBus.ObjectManager";

std::string TextOrEmpty(const gchar* text) {
    return text == nullptr ? "" : text;
}

bool Is(GDBusMessage* message, const char* interface, const char* member) {
    return TextOrEmpty(g_dbus_message_get_interface(message)) == interface &&
           TextOrEmpty(g_dbus_message_get_member(message)) == member;
}

bool HasBody(GDBusMessage* message, const char* type) {
    GVariant* body = g_dbus_message_get_body(message);
    return body != nullptr && g_variant_is_of_type(body, G_VARIANT_TYPE(type)) != FALSE;
}

std::string PathOf(GDBusMessage* message) {
    return TextOrEmpty(g_dbus_message_get_path(message));
}

std::string Print(GVariant* body) {
    return body == nullptr ? "()" : TextPtr(g_variant_print(body, TRUE)).get();
}

Call Describe(GDBusMessage* call) {
    return {TextOrEmpty(g_dbus_message_get_sender(call)), PathOf(call),
            TextOrEmpty(g_dbus_message_get_interface(call)),
            TextOrEmpty(g_dbus_message_get_member(call)), Print(g_dbus_message_get_body(call))};
}

bool IsOurs(const Call& call) {
    return call.interface.compare(0, std::strlen(kOwnInterfaces), kOwnInterfaces) == 0;
}

/// Released calls have the connection itself as sender, and are not subject to faults.
bool IsReleased(GDBusConnection* connection, GDBusMessage* call) {
    return TextOrEmpty(g_dbus_message_get_sender(call)) ==
           TextOrEmpty(g_dbus_connection_get_unique_name(connection));
}

MessagePtr CopyWithBody(const MessagePtr& message, const VariantPtr& body) {
    ErrorPtr error;
    MessagePtr copy(g_dbus_message_copy(message.get(), Out(error)));
    if (copy) {
        g_dbus_message_set_body(copy.get(), body.get());
    }
    return copy;
}

}  // namespace

guint MessageFilter::Install(GDBusConnection* connection,
                             std::shared_ptr<Instruments> instruments) {
    auto filter = std::make_unique<MessageFilter>(std::move(instruments));
    return g_dbus_connection_add_filter(connection, Filter, filter.release(), [](gpointer self) {
        std::unique_ptr<MessageFilter>(static_cast<MessageFilter*>(self));
    });
}

GDBusMessage* MessageFilter::Filter(GDBusConnection* connection, GDBusMessage* message,
                                    gboolean incoming, gpointer self) {
    auto* filter = static_cast<MessageFilter*>(self);
    MessagePtr owned(message);
    const bool is_call =
        g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
    if (incoming != FALSE && is_call) {
        return filter->OnCall(connection, std::move(owned)).release();
    }
    if (incoming == FALSE && !is_call) {
        return filter->OnOutgoing(std::move(owned)).release();
    }
    return owned.release();
}

MessagePtr MessageFilter::OnCall(GDBusConnection* connection, MessagePtr call) {
    Pending pending;
    pending.call = Describe(call.get());
    pending.is_released = IsReleased(connection, call.get());
    FaultyAnswer answer;
    if (!pending.is_released) {
        if (IsOurs(pending.call)) {
            instruments_->recorder.Record(pending.call);
        }
        instruments_->calls.Announce(pending.call);
        answer = AnswerFaultily(call.get(), pending.call);
    }
    pending.fault = answer.fault;
    pending.hangs = answer.fault != nullptr && !answer.message;
    Remember(call.get(), std::move(pending));
    if (answer.message) {
        g_dbus_connection_send_message(connection, answer.message.get(),
                                       G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    }
    return answer.fault == nullptr ? std::move(call) : nullptr;
}

FaultyAnswer MessageFilter::AnswerFaultily(GDBusMessage* call, const Call& description) {
    FaultyAnswer answer = instruments_->call_faults.AnswerTo(call, description);
    if (answer.fault == nullptr && Is(call, kProperties, "Get") && HasBody(call, "(ss)")) {
        return AnswerGet(call);
    }
    return answer;
}

FaultyAnswer MessageFilter::AnswerGet(GDBusMessage* call) {
    const gchar* interface = nullptr;
    const gchar* name = nullptr;
    g_variant_get(g_dbus_message_get_body(call), "(&s&s)", &interface, &name);
    const PropertyFaults::Reading reading =
        instruments_->property_faults.Read(PathOf(call), interface, name);
    if (!reading.faulty) {
        return {};
    }
    if (!reading.value) {
        return {"hide", MessagePtr(g_dbus_message_new_method_error(
                            call, "org.freedesktop.DBus.Error.InvalidArgs", "No such property “%s”",
                            name))};
    }
    MessagePtr reply(g_dbus_message_new_method_reply(call));
    g_dbus_message_set_body(reply.get(), g_variant_new("(v)", reading.value.get()));
    return {"override", std::move(reply)};
}

void MessageFilter::Remember(GDBusMessage* call, Pending pending) {
    const bool wants_reply =
        (g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0;
    if (pending.hangs || !wants_reply) {
        const auto kind = pending.hangs ? Answer::Kind::kHangs : Answer::Kind::kNotWanted;
        instruments_->answers.Announce({pending.call, kind, "", "", TextOrEmpty(pending.fault)});
    }
    if (!wants_reply) {
        return;
    }
    pending.reads_objects = Is(call, kObjectManager, "GetManagedObjects");
    pending.reads_interface = Is(call, kProperties, "GetAll") && HasBody(call, "(s)");
    if (pending.reads_interface) {
        const gchar* interface = nullptr;
        g_variant_get(g_dbus_message_get_body(call), "(&s)", &interface);
        pending.interface = interface;
    }
    const morvane::LockGuard guard(mutex_);
    pending_[{pending.call.sender, g_dbus_message_get_serial(call)}] = std::move(pending);
}

MessagePtr MessageFilter::OnOutgoing(MessagePtr message) {
    if (g_dbus_message_get_message_type(message.get()) != G_DBUS_MESSAGE_TYPE_SIGNAL) {
        return OnReply(std::move(message));
    }
    const VariantPtr body = EditSignal(message.get());
    return body ? CopyWithBody(message, body) : std::move(message);
}

MessagePtr MessageFilter::OnReply(MessagePtr reply) {
    std::optional<Pending> answered = TakeAnswered(reply.get());
    if (!answered) {
        return reply;
    }
    const VariantPtr body = EditReply(reply.get(), *answered);
    if (body) {
        const bool differs = g_variant_equal(body.get(), g_dbus_message_get_body(reply.get())) == 0;
        answered->fault = differs ? "override or hide" : nullptr;
        reply = CopyWithBody(reply, body);
    }
    if (reply && !answered->is_released && !instruments_->answers.IsEmpty()) {
        AnnounceAnswer(reply.get(), *answered);
    }
    return reply;
}

std::optional<MessageFilter::Pending> MessageFilter::TakeAnswered(GDBusMessage* reply) {
    const morvane::LockGuard guard(mutex_);
    const auto found = pending_.find({TextOrEmpty(g_dbus_message_get_destination(reply)),
                                      g_dbus_message_get_reply_serial(reply)});
    if (found == pending_.end()) {
        return std::nullopt;
    }
    Pending answered = std::move(found->second);
    pending_.erase(found);
    return answered;
}

void MessageFilter::AnnounceAnswer(GDBusMessage* reply, const Pending& answered) const {
    const std::string error = TextOrEmpty(g_dbus_message_get_error_name(reply));
    instruments_->answers.Announce(
        {answered.call, error.empty() ? Answer::Kind::kReply : Answer::Kind::kError, error,
         Print(g_dbus_message_get_body(reply)), TextOrEmpty(answered.fault)});
}

/// Null for a reply that is sent unchanged.
VariantPtr MessageFilter::EditReply(GDBusMessage* reply, const Pending& answered) const {
    const bool reads = answered.reads_objects || answered.reads_interface;
    if (!reads || answered.fault != nullptr ||
        !HasBody(reply, answered.reads_objects ? "(a{oa{sa{sv}}})" : "(a{sv})")) {
        return nullptr;
    }
    const VariantPtr content(g_variant_get_child_value(g_dbus_message_get_body(reply), 0));
    const VariantPtr edited = answered.reads_objects
                                  ? EditObjects(content.get())
                                  : instruments_->property_faults.Apply(
                                        answered.call.path, answered.interface, content.get());
    GVariant* child = edited.get();
    return Own(g_variant_new_tuple(&child, 1));
}

VariantPtr MessageFilter::EditSignal(GDBusMessage* signal) {
    if ((g_dbus_message_get_flags(signal) & kSentAsItStands) != 0) {
        return nullptr;
    }
    if (Is(signal, kProperties, "PropertiesChanged") && HasBody(signal, "(sa{sv}as)")) {
        return EditChanges(PathOf(signal), g_dbus_message_get_body(signal));
    }
    if (!Is(signal, kObjectManager, "InterfacesAdded")) {
        return nullptr;
    }
    const gchar* path = nullptr;
    VariantPtr interfaces;
    g_variant_get(g_dbus_message_get_body(signal), "(&o@a{sa{sv}})", &path,
                  static_cast<GVariant**>(Out(interfaces)));
    return Own(g_variant_new("(o@a{sa{sv}})", path, EditInterfaces(path, interfaces.get()).get()));
}

VariantPtr MessageFilter::EditObjects(GVariant* objects) const {
    GVariantBuilder edited;
    g_variant_builder_init(&edited, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, objects);
    while (const VariantPtr object{g_variant_iter_next_value(&iterator)}) {
        const gchar* path = nullptr;
        VariantPtr interfaces;
        g_variant_get(object.get(), "{&o@a{sa{sv}}}", &path,
                      static_cast<GVariant**>(Out(interfaces)));
        g_variant_builder_add(&edited, "{o@a{sa{sv}}}", path,
                              EditInterfaces(path, interfaces.get()).get());
    }
    return Own(g_variant_builder_end(&edited));
}

VariantPtr MessageFilter::EditInterfaces(const std::string& path, GVariant* interfaces) const {
    GVariantBuilder edited;
    g_variant_builder_init(&edited, G_VARIANT_TYPE("a{sa{sv}}"));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, interfaces);
    while (const VariantPtr interface{g_variant_iter_next_value(&iterator)}) {
        const gchar* name = nullptr;
        VariantPtr properties;
        g_variant_get(interface.get(), "{&s@a{sv}}", &name,
                      static_cast<GVariant**>(Out(properties)));
        g_variant_builder_add(
            &edited, "{s@a{sv}}", name,
            instruments_->property_faults.Apply(path, name, properties.get()).get());
    }
    return Own(g_variant_builder_end(&edited));
}

VariantPtr MessageFilter::EditChanges(const std::string& path, GVariant* body) const {
    const gchar* interface = nullptr;
    VariantPtr changed;
    VariantPtr invalidated;
    g_variant_get(body, "(&s@a{sv}@as)", &interface, static_cast<GVariant**>(Out(changed)),
                  static_cast<GVariant**>(Out(invalidated)));
    const VariantPtr edited =
        instruments_->property_faults.ApplyToChanges(path, interface, changed.get());
    return Own(g_variant_new("(s@a{sv}@as)", interface, edited.get(), invalidated.get()));
}

}  // namespace simulator
