#include "simulator/program/control.h"

#include "simulator/bus/connect.h"
#include "simulator/objects/handler.h"

#include <array>
#include <stdexcept>
#include <vector>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::GlibPtr;
using morvane::Out;
using morvane::Own;
using morvane::VariantPtr;

constexpr guint32 kDoNotQueue = 4;
constexpr guint32 kPrimaryOwner = 1;

const char* NameOf(CommandErrorKind kind) {
    switch (kind) {
        case CommandErrorKind::kUnknownCommand:
            return "org.morvane.Simulator1.Error.UnknownCommand";
        case CommandErrorKind::kBadArguments:
            return "org.morvane.Simulator1.Error.InvalidArguments";
        case CommandErrorKind::kNoSuchObject:
            return "org.morvane.Simulator1.Error.NoSuchObject";
        case CommandErrorKind::kOtherFailure:
            break;
    }
    return "org.morvane.Simulator1.Error.Failed";
}

Refusal AsRefusal(CommandErrorKind kind, const std::exception& failure) {
    return {NameOf(kind), failure.what()};
}

/// Calls the daemon; exceptions become errors of the interface.
template <typename Action>
auto Try(const Action& action) {
    try {
        return action();
    } catch (const CommandError& failure) {
        throw AsRefusal(failure.kind(), failure);
    } catch (const std::invalid_argument& failure) {
        throw AsRefusal(CommandErrorKind::kBadArguments, failure);
    } catch (const std::exception& failure) {
        throw AsRefusal(CommandErrorKind::kOtherFailure, failure);
    }
}

/// The same for an action without a result.
template <typename Action>
VariantPtr Do(const Action& action) {
    Try(action);
    return nullptr;
}

VariantPtr Unboxed(GVariant* value) {
    return VariantPtr(g_variant_get_variant(value));
}

VariantPtr PathList(const std::vector<std::string>& paths) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const std::string& path : paths) {
        g_variant_builder_add(&builder, "o", path.c_str());
    }
    return Own(g_variant_new("(ao)", &builder));
}

std::array<GVariant*, 5> Fields(const Call& call) {
    return {g_variant_new_string(call.sender.c_str()), g_variant_new_object_path(call.path.c_str()),
            g_variant_new_string(call.interface.c_str()), g_variant_new_string(call.method.c_str()),
            g_variant_new_string(call.body.c_str())};
}

GVariant* AsTuple(const Call& call) {
    const auto fields = Fields(call);
    return g_variant_new_tuple(fields.data(), fields.size());
}

const char* NameOf(Answer::Kind kind) {
    switch (kind) {
        case Answer::Kind::kReply:
            return "reply";
        case Answer::Kind::kError:
            return "error";
        case Answer::Kind::kHangs:
            return "hangs";
        case Answer::Kind::kNotWanted:
            break;
    }
    return "not-wanted";
}

GVariant* AsTuple(const Answer& answer) {
    const auto call = Fields(answer.call);
    std::vector<GVariant*> fields(call.begin(), call.end());
    for (const char* text : {NameOf(answer.kind), answer.error_name.c_str(), answer.body.c_str(),
                             answer.fault.c_str()}) {
        fields.push_back(g_variant_new_string(text));
    }
    return g_variant_new_tuple(fields.data(), fields.size());
}

}  // namespace

std::string ControlName(const std::string& instance) {
    const std::string name = "org.morvane.Simulator";
    return instance.empty() ? name : name + "." + instance;
}

Control::Control(const std::string& address, const std::string& instance, Daemon& daemon,
                 Execute execute)
    : daemon_(daemon),
      execute_(std::move(execute)),
      bus_name_(ControlName(instance)),
      connection_(Connect(address)),
      skeleton_(org_morvane_simulator1_skeleton_new()),
      calls_(daemon.OnCall([this](const Call& call) { Emit("CallArrived", AsTuple(call)); })),
      answers_(daemon.OnAnswer(
          [this](const Answer& answer) { Emit("CallAnswered", AsTuple(answer)); })) {
    Export();
    OwnName();
}

Control::~Control() {
    g_dbus_interface_skeleton_unexport(G_DBUS_INTERFACE_SKELETON(skeleton_.get()));
    g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void Control::Export() {
    gpointer skeleton = skeleton_.get();
    Handle<&Control::OnExecute>(skeleton, "handle-execute", this);
    Handle<&Control::OnRefuse>(skeleton, "handle-refuse", this);
    Handle<&Control::OnReply>(skeleton, "handle-reply", this);
    Handle<&Control::OnHang>(skeleton, "handle-hang", this);
    Handle<&Control::OnOverrideProperty>(skeleton, "handle-override-property", this);
    Handle<&Control::OnNotify>(skeleton, "handle-notify", this);
    Handle<&Control::OnAddDevice>(skeleton, "handle-add-device", this);
    Handle<&Control::OnSetPullContent>(skeleton, "handle-set-pull-content", this);
    Handle<&Control::OnListPhones>(skeleton, "handle-list-phones", this);
    Handle<&Control::OnListSessions>(skeleton, "handle-list-sessions", this);
    Handle<&Control::OnListTransfers>(skeleton, "handle-list-transfers", this);
    Handle<&Control::OnListCalls>(skeleton, "handle-list-calls", this);
    ErrorPtr error;
    g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton), connection_.get(),
                                     kControlPath, Out(error));
    if (error) {
        throw std::runtime_error(error->message);
    }
}

void Control::OwnName() const {
    ErrorPtr error;
    const VariantPtr reply(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", bus_name_.c_str(), kDoNotQueue), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, Out(error)));
    if (!reply) {
        g_dbus_error_strip_remote_error(error.get());
        throw std::runtime_error(error->message);
    }
    guint32 result = 0;
    g_variant_get(reply.get(), "(u)", &result);
    if (result != kPrimaryOwner) {
        throw std::runtime_error("The bus name " + bus_name_ + " has another owner");
    }
}

void Control::Emit(const char* signal, GVariant* arguments) const {
    g_dbus_connection_emit_signal(connection_.get(), nullptr, kControlPath, kControlInterface,
                                  signal, arguments, nullptr);
}

VariantPtr Control::OnExecute(const gchar* command) {
    const std::string answer = Try([&] { return execute_(command); });
    return Own(g_variant_new("(s)", answer.c_str()));
}

VariantPtr Control::OnRefuse(const gchar* method, const gchar* error, const gchar* message,
                             guint times) {
    return Do([&] { daemon_.Refuse(method, error, message, times); });
}

VariantPtr Control::OnReply(const gchar* method, GVariant* body, guint times) {
    return Do([&] { daemon_.Reply(method, Unboxed(body).get(), times); });
}

VariantPtr Control::OnHang(const gchar* method, guint times) {
    return Do([&] { daemon_.Hang(method, times); });
}

VariantPtr Control::OnOverrideProperty(const gchar* path, const gchar* interface,
                                       const gchar* property, GVariant* value) {
    return Do([&] { daemon_.OverrideProperty(path, interface, property, Unboxed(value).get()); });
}

VariantPtr Control::OnNotify(const gchar* path, const gchar* interface, GVariant* properties) {
    return Do([&] { daemon_.NotifyAll(path, interface, properties); });
}

VariantPtr Control::OnAddDevice(const gchar* path, GVariant* properties) {
    return Do([&] { daemon_.AddDevice(path, properties); });
}

VariantPtr Control::OnSetPullContent(GVariant* content) {
    gsize size = 0;
    const auto* bytes =
        static_cast<const char*>(g_variant_get_fixed_array(content, &size, sizeof(char)));
    return Do([&] { daemon_.SetPullContent(std::string(bytes, size)); });
}

VariantPtr Control::OnListPhones() {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ossbb)"));
    for (const PhoneInfo& phone : daemon_.Phones()) {
        g_variant_builder_add(&builder, "(ossbb)", phone.path.c_str(), phone.address.c_str(),
                              phone.name.c_str(), phone.demands_authentication ? TRUE : FALSE,
                              phone.present ? TRUE : FALSE);
    }
    return Own(g_variant_new("(a(ossbb))", &builder));
}

VariantPtr Control::OnListSessions() {
    return PathList(daemon_.Sessions());
}

VariantPtr Control::OnListTransfers() {
    return PathList(daemon_.Transfers());
}

VariantPtr Control::OnListCalls() {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(sosss)"));
    for (const Call& call : daemon_.Calls()) {
        g_variant_builder_add_value(&builder, AsTuple(call));
    }
    return Own(g_variant_new("(a(sosss))", &builder));
}

}  // namespace simulator
