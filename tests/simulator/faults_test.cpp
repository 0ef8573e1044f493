#include "simulator/simulator_fixture.h"

#include <future>
#include <tuple>

namespace simulator {
namespace {

using std::string;

constexpr char kFailed[] = "com.veltrisonix.Error.Failed";
constexpr std::chrono::seconds kPatience{60};

class SimulatorFaults : public SimulatorTest {
  protected:
    void SetUp() override { StartSelected(ByHand()); }

    /// Makes a call with another client, in another thread.
    std::future<string> CallElsewhere(const string& path, const string& method) {
        return std::async(std::launch::async, [address = bus_.Address(), path, method] {
            return TestClient(address).Call(path, method);
        });
    }
};

TEST_F(SimulatorFaults, RefusesTheMethodOfOneInterfaceTheGivenNumberOfTimes) {
    const string busy = Error("Failed", "Busy");
    daemon().Refuse("com.veltrisonix.obex.Client1.GetSize", kFailed, "Busy");
    EXPECT_EQ(Access("GetSize"), "(uint16 26,)");
    daemon().Refuse("com.veltrisonix.obex.PhonebookAccess1.GetSize", kFailed, "Busy", 2);
    EXPECT_EQ(Access("GetSize"), busy);
    EXPECT_EQ(Access("ListFilterFields").substr(0, 11), "(['VERSION'");
    EXPECT_EQ(Access("GetSize"), busy);
    EXPECT_EQ(Access("GetSize"), "(uint16 26,)");
}

TEST_F(SimulatorFaults, CallsHangUntilReleased) {
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {kSession, "obex.PhonebookAccess1.", "GetSize", "(uint16 26,)"},
        {kClientPath, "obex.Client1.", "CreateSession", "org.freedesktop.DBus.Error.InvalidArgs"},
        {"/", "org.freedesktop.DBus.ObjectManager.", "GetManagedObjects", "({objectpath"},
    };
    daemon().Hang("Select");
    daemon().ForgetCalls();
    for (const auto& [path, interface, method, reply] : rows) {
        daemon().Hang(method);
        std::promise<void> hanging;
        Subscription answers = daemon().OnAnswer([&](const Answer& answer) {
            if (answer.kind == Answer::Kind::kHangs) hanging.set_value();
        });
        std::future<string> call = CallElsewhere(path, string(interface) + method);
        ASSERT_EQ(hanging.get_future().wait_for(kPatience), std::future_status::ready) << method;
        EXPECT_EQ(call.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        answers.reset();
        daemon().Release();
        EXPECT_EQ(call.get().find(reply), 0U) << method;
        EXPECT_EQ(client().Call(path, string(interface) + method).find(reply), 0U)
            << "later calls pass";
    }
    EXPECT_EQ(daemon().Calls().size(), 4U) << "a released call is recorded once";
}

TEST_F(SimulatorFaults, CrashAndLeaveEndCallsAndSessions) {
    daemon().Hang("GetSize", 1);
    std::future<string> call = CallElsewhere(kSession, "obex.PhonebookAccess1.GetSize");
    ASSERT_TRUE(daemon().AwaitCall("GetSize", kPatience));
    daemon().Crash();
    EXPECT_EQ(call.get(),
              "org.freedesktop.DBus.Error.NoReply: "
              "Message recipient disconnected from message bus without replying");
    daemon().Notify("/a", "com.veltrisonix.Device1", "Alias", g_variant_new_string("unheard"));
    daemon().ReturnToBus();
    EXPECT_TRUE(daemon().Sessions().empty());
    EXPECT_EQ(CreateSession(), "(objectpath '/com/veltrisonix/obex/client/session1',)");
    daemon().LeaveBus();
    EXPECT_NE(CreateSession().find("ServiceUnknown"), string::npos);
    daemon().LeaveBus();
    daemon().ReturnToBus();
    daemon().ReturnToBus();
    EXPECT_EQ(CreateSession(), "(objectpath '/com/veltrisonix/obex/client/session2',)");
}

TEST_F(SimulatorFaults, HiddenPropertyIsInNoReply) {
    daemon().HideProperty(kAnyPath, kSessionInterface, "Source");
    EXPECT_EQ(client().GetAll(kSession, "obex.Session1").find("Source"), string::npos);
    EXPECT_NE(client().Get(kSession, "obex.Session1", "Source").find("No such property"),
              string::npos);
    EXPECT_EQ(
        client().Call("/", "org.freedesktop.DBus.ObjectManager.GetManagedObjects").find("Source"),
        string::npos);
}

TEST_F(SimulatorFaults, OverrideOfOneObjectPrecedesThatOfAllObjects) {
    daemon().OverrideProperty(kSession, kSessionInterface, "Channel", g_variant_new_string("x"));
    daemon().OverrideProperty(kSession, kSessionInterface, "Root", g_variant_new_string("mine"));
    daemon().OverrideProperty(kAnyPath, kSessionInterface, "Root", g_variant_new_string("all"));
    daemon().OverrideProperty(kAnyPath, kSessionInterface, "New", g_variant_new_byte(2));
    daemon().OverrideProperty(kSession, kSessionInterface, "New", g_variant_new_byte(1));
    daemon().OverrideProperty(kClientPath, kSessionInterface, "Other", g_variant_new_byte(3));
    EXPECT_EQ(client().GetAll(kSession, "obex.Session1"),
              "({'Source': <'02:00:5E:00:00:01'>, 'Destination': <'02:00:5E:10:00:01'>, "
              "'Channel': <'x'>, 'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>, "
              "'Root': <'mine'>, 'ConnectionState': <byte 0x05>, 'New': <byte 0x01>},)");
    EXPECT_EQ(client().Get(kSession, "obex.Session1", "Channel"), "(<'x'>,)");
    EXPECT_EQ(client().Get(kSession, "obex.Session1", "Root"), "(<'mine'>,)");
    EXPECT_EQ(client().TakeSignals(), Signals{});
}

TEST_F(SimulatorFaults, OverridesApplyToAnnouncedChanges) {
    daemon().OverrideProperty(kAnyPath, kTransferInterface, "Status", g_variant_new_byte(7));
    daemon().HideProperty(kAnyPath, kTransferInterface, "Size");
    const string reply = Access("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
    EXPECT_NE(reply.find("'Status': <byte 0x07>"), string::npos) << reply;
    EXPECT_EQ(reply.find("'Size'"), string::npos) << reply;
    client().TakeSignals();
    daemon().StartTransfer(kTransfer);
    EXPECT_EQ(client().TakeSignals(),
              Signals{Changed(kTransfer, "obex.Transfer1", "'Status': <byte 0x07>")});
}

TEST_F(SimulatorFaults, NotificationsAreNotOverridden) {
    daemon().OverrideProperty(kSession, kPhonebookInterface, "Folder", g_variant_new_byte(7));
    daemon().Notify(kSession, kPhonebookInterface, "Folder", g_variant_new_uint32(3));
    EXPECT_EQ(client().TakeSignals(), Signals{Changed(kSession, kAccess, "'Folder': <uint32 3>")});
}

TEST_F(SimulatorFaults, CallsAreRecordedAndAwaitedOnce) {
    daemon().ForgetCalls();
    Access("Search", "('name', 'x', @a{sv} {'MaxCount': <uint16 3>})");
    Access("GetSize");
    client().Get(kSession, "obex.Session1", "Source");
    const std::vector<Call> calls = daemon().Calls();
    ASSERT_EQ(calls.size(), 2U) << "standard interfaces are not recorded";
    EXPECT_EQ(Describe(calls[0]), string(kSession) +
                                      " com.veltrisonix.obex.PhonebookAccess1.Search('name', 'x', "
                                      "{'MaxCount': <uint16 3>})");
    EXPECT_EQ(calls[1].body, "()");
    EXPECT_EQ(calls[1].sender.front(), ':');
    Access("GetSize");
    EXPECT_TRUE(daemon().AwaitCall("GetSize", kPatience));
    EXPECT_TRUE(daemon().AwaitCall("com.veltrisonix.obex.PhonebookAccess1.GetSize", kPatience));
    EXPECT_FALSE(daemon().AwaitCall("GetSize", std::chrono::milliseconds(1)));
}

TEST_F(SimulatorFaults, RefuseInvalidArguments) {
    EXPECT_THROW(daemon().Refuse("GetSize", "no error name", ""), std::invalid_argument);
    EXPECT_THROW(daemon().Reply("GetSize", g_variant_new_string("no tuple")),
                 std::invalid_argument);
    EXPECT_THROW(daemon().Reply("GetSize", nullptr), std::invalid_argument);
    EXPECT_THROW(daemon().Notify("no path", kSessionInterface, "Root", g_variant_new_byte(1)),
                 std::invalid_argument);
    EXPECT_THROW(daemon().Notify("/a", "nodots", "Root", g_variant_new_byte(1)),
                 std::invalid_argument);
    EXPECT_THROW(daemon().AddDevice("/a", g_variant_new_string("no dictionary")),
                 std::invalid_argument);
    EXPECT_THROW(daemon().SetConnectionState("/a", 1), std::runtime_error);
    EXPECT_THROW(daemon().RemoveDevice("/a"), std::runtime_error);
}

class SimulatorOnTheBus : public SimulatorTest {};

TEST_F(SimulatorOnTheBus, ReportsInOneLineWhyItCannotStart) {
    Start(ByHand());
    const auto failure = [](const string& address, const Options& options) {
        return FailureOf([&] { Daemon(address, options); });
    };
    EXPECT_EQ(failure(bus_.Address(), {}), "Cannot own the name com.veltrisonix: it is in use");
    EXPECT_EQ(failure("unix:path=/nonexistent/bus", {}).find("Cannot connect to the bus: "), 0U);
    Options options;
    options.instance = "7up";
    EXPECT_THROW(Daemon(bus_.Address(), options), std::invalid_argument);
}

TEST_F(SimulatorOnTheBus, ReportsLossOfTheBus) {
    Start(ByHand());
    std::promise<void> lost;
    daemon().OnBusLost([&lost] { lost.set_value(); });
    bus_.Kill();
    EXPECT_EQ(lost.get_future().wait_for(kPatience), std::future_status::ready);
    daemon().OnBusLost(nullptr);
    daemon().AddDevice("/a/dev_1", "00:00:00:00:00:01", "nobody sees it");
    EXPECT_THROW(daemon().ReturnToBus(), std::runtime_error);
}

TEST_F(SimulatorOnTheBus, ConnectionOfTheCallerStaysOpen) {
    morvane::ErrorPtr error;
    constexpr auto kFlags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const morvane::GlibPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        bus_.Address().c_str(), kFlags, nullptr, nullptr, morvane::Out(error)));
    ASSERT_TRUE(connection);
    client_.emplace(bus_.Address());
    for (int round = 0; round < 2; ++round) {
        Daemon daemon(connection.get(), ByHand());
        EXPECT_EQ(CreateSession(), "(objectpath '" + string(kSession) + "',)");
    }
    EXPECT_FALSE(g_dbus_connection_is_closed(connection.get()));
    Daemon daemon(connection.get(), ByHand());
    daemon.Crash();
    EXPECT_TRUE(g_dbus_connection_is_closed(connection.get()));
    EXPECT_THROW(daemon.ReturnToBus(), std::runtime_error);
}

}  // namespace
}  // namespace simulator
