#include "simulator/daemon.h"

#include "interfaces/bus_name.h"
#include "simulator/bus/event_thread.h"
#include "simulator/objects/stack.h"

#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

namespace simulator {
namespace {

using morvane::kDefaultBusName;
using morvane::VariantPtr;

void Demand(bool condition, const std::string& complaint) {
    if (!condition) {
        throw std::invalid_argument(complaint);
    }
}

VariantPtr Take(GVariant* value) {
    Demand(value != nullptr, "No value given");
    return VariantPtr(g_variant_ref_sink(value));
}

VariantPtr Take(GVariant* value, const char* type) {
    VariantPtr taken = Take(value);
    Demand(g_variant_is_of_type(taken.get(), G_VARIANT_TYPE(type)) != FALSE,
           std::string("The value is of type ") + g_variant_get_type_string(taken.get()) +
               ", not " + type);
    return taken;
}

VariantPtr OneProperty(const std::string& name, GVariant* value) {
    const VariantPtr owned = Take(value);
    GVariantDict properties;
    g_variant_dict_init(&properties, nullptr);
    g_variant_dict_insert_value(&properties, name.c_str(), owned.get());
    return Take(g_variant_dict_end(&properties));
}

void DemandPath(const std::string& path) {
    Demand(g_variant_is_object_path(path.c_str()) != FALSE, "Not an object path: " + path);
}

void DemandInterface(const std::string& interface) {
    Demand(g_dbus_is_interface_name(interface.c_str()) != FALSE,
           "Not an interface name: " + interface);
}

template <typename Info>
std::vector<std::string> PathsOf(const std::vector<Info>& infos) {
    std::vector<std::string> paths;
    paths.reserve(infos.size());
    for (const Info& info : infos) {
        paths.push_back(info.path);
    }
    return paths;
}

std::string BusNameOf(const std::string& instance) {
    std::string name =
        instance.empty() ? kDefaultBusName : std::string(kDefaultBusName) + "." + instance;
    Demand(g_dbus_is_name(name.c_str()) != FALSE, "Not a bus name: " + name);
    return name;
}

}  // namespace

class Daemon::Impl {
  public:
    template <typename Source>
    Impl(const Source& source, const Options& options)
        : options_(options),
          bus_name_(BusNameOf(options.instance)),
          instruments_(std::make_shared<Instruments>()) {
        const auto make_bus = [&] {
            return std::make_unique<Bus>(source, bus_name_, instruments_);
        };
        thread_.Run([&] {
            stack_ = std::make_unique<Stack>(options_, make_bus, instruments_->property_faults);
        });
    }
    ~Impl() {
        thread_.Run([this] { stack_.reset(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Runs an action in the thread and waits until the bus has received its signals.
    template <typename Action>
    void Do(Action action) {
        thread_.Run([&] {
            action(*stack_);
            stack_->bus().Settle();
        });
    }
    /// The same for an action that returns whether it changed anything.
    template <typename Action>
    bool Change(Action action) {
        bool changed = false;
        Do([&](Stack& stack) { changed = action(stack); });
        return changed;
    }

    template <typename Question>
    auto Ask(Question question) {
        decltype(question(*stack_)) answer;
        thread_.Run([&] { answer = question(*stack_); });
        return answer;
    }

    bool Release() {
        std::promise<void> answered;
        bool changed = false;
        thread_.Run([&] {
            CallFaults::Released released = instruments_->call_faults.Release();
            changed = released.faults_ended || !released.calls.empty();
            stack_->bus().CarryOut(std::move(released.calls),
                                   [&answered] { answered.set_value(); });
        });
        answered.get_future().get();
        return changed;
    }

    [[nodiscard]] const std::string& bus_name() const { return bus_name_; }
    Instruments& instruments() { return *instruments_; }

  private:
    const Options options_;
    const std::string bus_name_;
    const std::shared_ptr<Instruments> instruments_;
    std::unique_ptr<Stack> stack_;  // accessed in the thread only
    EventThread thread_;
};

Daemon::Daemon(const std::string& address, const Options& options)
    : impl_(std::make_unique<Impl>(address, options)) {}

Daemon::Daemon(GDBusConnection* connection, const Options& options)
    : impl_(std::make_unique<Impl>(connection, options)) {}

Daemon::~Daemon() = default;

std::string Daemon::BusName() const {
    return impl_->bus_name();
}

std::vector<Call> Daemon::Calls() const {
    return impl_->instruments().recorder.Calls();
}

std::optional<Call> Daemon::AwaitCall(const std::string& method,
                                      std::chrono::milliseconds timeout) {
    return impl_->instruments().recorder.Await(method, timeout);
}

bool Daemon::ForgetCalls() {
    return impl_->instruments().recorder.Forget();
}

Subscription Daemon::OnCall(std::function<void(const Call&)> handler) {
    return impl_->instruments().calls.Add(std::move(handler));
}

Subscription Daemon::OnAnswer(std::function<void(const Answer&)> handler) {
    return impl_->instruments().answers.Add(std::move(handler));
}

std::vector<PhoneInfo> Daemon::Phones() const {
    return impl_->Ask([](Stack& stack) { return stack.devices().Phones(); });
}

std::vector<PhoneInfo> Daemon::Devices() const {
    return impl_->Ask([](Stack& stack) { return stack.devices().All(); });
}

void Daemon::AddDevice(const std::string& path, GVariant* properties) {
    const VariantPtr owned = Take(properties, "a{sv}");
    DemandPath(path);
    impl_->Do([&](Stack& stack) { stack.devices().AddExact(path, owned.get()); });
}

void Daemon::AddDevice(const std::string& path, const std::string& address,
                       const std::string& alias) {
    DemandPath(path);
    impl_->Do([&](Stack& stack) { stack.devices().Add(path, address, alias); });
}

void Daemon::RemoveDevice(const std::string& path) {
    impl_->Do([&](Stack& stack) { stack.devices().Remove(path); });
}

bool Daemon::ReturnDevice(const std::string& path) {
    return impl_->Change([&](Stack& stack) { return stack.devices().Return(path); });
}

bool Daemon::RemoveClient() {
    return impl_->Change([](Stack& stack) { return stack.RemoveClient(); });
}

bool Daemon::AddClient() {
    return impl_->Change([](Stack& stack) { return stack.AddClient(); });
}

bool Daemon::LeaveBus() {
    return impl_->Change([](Stack& stack) { return stack.LeaveBus(); });
}

bool Daemon::Crash() {
    const bool changed = impl_->Change([](Stack& stack) { return stack.Crash(); });
    impl_->instruments().call_faults.ForgetHanging();
    return changed;
}

bool Daemon::ReturnToBus() {
    return impl_->Change([](Stack& stack) { return stack.ReturnToBus(); });
}

void Daemon::OnBusLost(std::function<void()> handler) {
    impl_->Do([&](Stack& stack) { stack.bus().OnLost(std::move(handler)); });
}

std::vector<std::string> Daemon::Sessions() const {
    return PathsOf(DescribeSessions());
}

std::vector<std::string> Daemon::Transfers() const {
    return PathsOf(DescribeTransfers());
}

std::vector<SessionInfo> Daemon::DescribeSessions() const {
    return impl_->Ask([](Stack& stack) { return stack.sessions().Describe(); });
}

std::vector<TransferInfo> Daemon::DescribeTransfers() const {
    return impl_->Ask([](Stack& stack) { return stack.sessions().DescribeTransfers(); });
}

bool Daemon::Lacks(const std::string& path, const std::string& interface) const {
    return impl_->Ask([&](Stack& stack) { return stack.world().tree.Lacks(path, interface); });
}

bool Daemon::SetConnectionState(const std::string& session, std::uint8_t state) {
    return impl_->Change(
        [&](Stack& stack) { return stack.GetSession(session).SetConnectionState(state); });
}

void Daemon::CloseSession(const std::string& session) {
    impl_->Do([&](Stack& stack) {
        stack.GetSession(session).Disconnect();
        stack.sessions().Close(session);
    });
}

void Daemon::SetPullContent(const std::string& content) {
    impl_->Do([&](Stack& stack) { stack.world().pull_content = content; });
}

bool Daemon::RestorePullContent() {
    return impl_->Change([](Stack& stack) {
        return std::exchange(stack.world().pull_content, std::nullopt).has_value();
    });
}

void Daemon::AdvanceTransfer(const std::string& transfer, std::uint64_t bytes) {
    impl_->Do([&](Stack& stack) { stack.GetTransfer(transfer).Advance(bytes); });
}

bool Daemon::StartTransfer(const std::string& transfer) {
    return impl_->Change([&](Stack& stack) { return stack.GetTransfer(transfer).Start(); });
}

void Daemon::CompleteTransfer(const std::string& transfer) {
    AdvanceTransfer(transfer, std::numeric_limits<std::uint64_t>::max());
}

void Daemon::AbortTransfer(const std::string& transfer) {
    impl_->Do([&](Stack& stack) { stack.GetTransfer(transfer).Abort(); });
}

bool Daemon::StallTransfers(bool stall) {
    return impl_->Change([&](Stack& stack) {
        return std::exchange(stack.world().transfers_stalled, stall) != stall;
    });
}

bool Daemon::UseEmptyTransferPath(bool use) {
    return impl_->Change(
        [&](Stack& stack) { return std::exchange(stack.world().empty_transfer_path, use) != use; });
}

void Daemon::MissCall(const std::string& phone, const std::string& number) {
    impl_->Do([&](Stack& stack) { stack.devices().Get(phone).phone->MissCall(number); });
}

void Daemon::AddContact(const std::string& phone, const std::string& name,
                        const std::string& number) {
    impl_->Do([&](Stack& stack) { stack.devices().Get(phone).phone->AddContact(name, number); });
}

void Daemon::Refuse(const std::string& method, const std::string& error_name,
                    const std::string& message, unsigned times) {
    Demand(g_dbus_is_interface_name(error_name.c_str()) != FALSE,
           "Not an error name: " + error_name);
    impl_->instruments().call_faults.Set(
        method, {CallFault::Kind::kRefuse, error_name, message, nullptr}, times);
}

void Daemon::Reply(const std::string& method, GVariant* body, unsigned times) {
    impl_->instruments().call_faults.Set(method, {CallFault::Kind::kReply, "", "", Take(body, "r")},
                                         times);
}

void Daemon::Hang(const std::string& method, unsigned times) {
    impl_->instruments().call_faults.Set(method, {CallFault::Kind::kHang, "", "", nullptr}, times);
}

bool Daemon::Release() {
    return impl_->Release();
}

bool Daemon::ClearFaults() {
    return impl_->instruments().call_faults.Clear();
}

void Daemon::OverrideProperty(const std::string& path, const std::string& interface,
                              const std::string& name, GVariant* value) {
    impl_->instruments().property_faults.Override(path, interface, name, Take(value));
}

void Daemon::HideProperty(const std::string& path, const std::string& interface,
                          const std::string& name) {
    impl_->instruments().property_faults.Hide(path, interface, name);
}

bool Daemon::ClearPropertyFaults() {
    return impl_->instruments().property_faults.Clear();
}

void Daemon::Notify(const std::string& path, const std::string& interface, const std::string& name,
                    GVariant* value) {
    NotifyAll(path, interface, OneProperty(name, value).get());
}

void Daemon::NotifyAll(const std::string& path, const std::string& interface,
                       GVariant* properties) {
    const VariantPtr owned = Take(properties, "a{sv}");
    DemandPath(path);
    DemandInterface(interface);
    impl_->Do([&](Stack& stack) {
        stack.bus().EmitChanges(path, interface, owned.get(), {}, kSentAsItStands);
    });
}

void Daemon::Invalidate(const std::string& path, const std::string& interface,
                        const std::string& name) {
    DemandPath(path);
    DemandInterface(interface);
    impl_->Do([&](Stack& stack) {
        stack.bus().EmitChanges(path, interface, g_variant_new("a{sv}", nullptr), {name},
                                kSentAsItStands);
    });
}

void Daemon::Flood(const std::string& path, const std::string& interface, const std::string& name,
                   std::size_t count, const std::function<GVariant*(std::size_t)>& value) {
    DemandPath(path);
    DemandInterface(interface);
    impl_->Do([&](Stack& stack) {
        for (std::size_t i = 0; i < count; ++i) {
            const VariantPtr properties = OneProperty(name, value(i));
            stack.bus().EmitChanges(path, interface, properties.get(), {}, kSentAsItStands);
        }
    });
}

}  // namespace simulator
