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

/// Calls that were released come from the connection itself and are carried out untouched.
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
    if (!IsReleased(connection, call.get())) {
        const Call description = Describe(call.get());
        if (IsOurs(description)) {
            instruments_->recorder.Record(description);
        }
        bool hangs = false;
        const MessagePtr answer = AnswerFaultily(call.get(), description, hangs);
        if (answer) {
            g_dbus_connection_send_message(connection, answer.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                           nullptr, nullptr);
        }
        if (answer || hangs) {
            return nullptr;
        }
    }
    Remember(call.get());
    return call;
}

MessagePtr MessageFilter::AnswerFaultily(GDBusMessage* call, const Call& description, bool& hangs) {
    MessagePtr answer = instruments_->call_faults.Answer(call, description, hangs);
    if (!answer && !hangs && Is(call, kProperties, "Get") && HasBody(call, "(ss)")) {
        return AnswerGet(call);
    }
    return answer;
}

MessagePtr MessageFilter::AnswerGet(GDBusMessage* call) {
    const gchar* interface = nullptr;
    const gchar* name = nullptr;
    g_variant_get(g_dbus_message_get_body(call), "(&s&s)", &interface, &name);
    const PropertyFaults::Reading reading =
        instruments_->property_faults.Read(PathOf(call), interface, name);
    if (!reading.faulty) {
        return nullptr;
    }
    if (!reading.value) {
        return MessagePtr(g_dbus_message_new_method_error(
            call, "org.freedesktop.DBus.Error.InvalidArgs", "No such property “%s”", name));
    }
    MessagePtr reply(g_dbus_message_new_method_reply(call));
    g_dbus_message_set_body(reply.get(), g_variant_new("(v)", reading.value.get()));
    return reply;
}

void MessageFilter::Remember(GDBusMessage* call) {
    const bool all_objects = Is(call, kObjectManager, "GetManagedObjects");
    const bool one_object = Is(call, kProperties, "GetAll") && HasBody(call, "(s)");
    if (!all_objects && !one_object) {
        return;
    }
    const gchar* interface = "";
    if (one_object) {
        g_variant_get(g_dbus_message_get_body(call), "(&s)", &interface);
    }
    const morvane::Hold hold(mutex_);
    questions_[{TextOrEmpty(g_dbus_message_get_sender(call)), g_dbus_message_get_serial(call)}] =
        Subject{PathOf(call), interface, all_objects};
}

MessagePtr MessageFilter::OnOutgoing(MessagePtr message) {
    VariantPtr body;
    if (g_dbus_message_get_message_type(message.get()) == G_DBUS_MESSAGE_TYPE_SIGNAL) {
        body = EditSignal(message.get());
    } else {
        body = EditReply(message.get());
    }
    return body ? CopyWithBody(message, body) : std::move(message);
}

VariantPtr MessageFilter::EditReply(GDBusMessage* reply) {
    Subject subject;
    {
        const morvane::Hold hold(mutex_);
        const auto question = questions_.find({TextOrEmpty(g_dbus_message_get_destination(reply)),
                                               g_dbus_message_get_reply_serial(reply)});
        if (question == questions_.end()) {
            return nullptr;
        }
        subject = question->second;
        questions_.erase(question);
    }
    if (!HasBody(reply, subject.all_objects ? "(a{oa{sa{sv}}})" : "(a{sv})")) {
        return nullptr;
    }
    const VariantPtr content(g_variant_get_child_value(g_dbus_message_get_body(reply), 0));
    const VariantPtr edited =
        subject.all_objects
            ? EditObjects(content.get())
            : instruments_->property_faults.Apply(subject.path, subject.interface, content.get());
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
