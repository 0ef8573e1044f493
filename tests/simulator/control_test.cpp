// The control interface, as gdbus(1) sees it.

#include "simulator/program/control.h"
#include "simulator/program_fixture.h"
#include "support/gdbus.h"
#include "support/private_bus.h"

#include <fstream>

namespace simulator {
namespace {

using morvane_test::CallControl;
using morvane_test::Gdbus;
using morvane_test::PrivateBus;

constexpr char kControl[] = "org.morvane.Simulator";

class ControlInterface : public ProgramTest {
  protected:
    void SetUp() override { console_ = &Serve(bus_.Address(), {"--phones=1"}); }
    void TearDown() override {
        if (!console_->HasEnded()) console_->Type("quit");
        if (monitor_ != nullptr) monitor_->Kill();
        ProgramTest::TearDown();
    }

    std::string Control(const std::string& method, const std::vector<std::string>& arguments = {}) {
        return CallControl(bus_.Address(), method, arguments);
    }
    std::string Execute(const std::string& command) { return Control("Execute", {command}); }
    /// Calls a method of the simulated daemon.
    std::string CallDaemon(const std::string& path, const std::string& method,
                           const std::vector<std::string>& arguments = {}) {
        return Gdbus(bus_.Address(), "com.veltrisonix", path, method, arguments);
    }
    std::string SetPassword() {
        return CallDaemon("/com/veltrisonix/obex", "com.veltrisonix.obex.Client1.SetPassword",
                          {"x"});
    }
    void CreateSession() {
        EXPECT_EQ(CallDaemon("/com/veltrisonix/obex", "com.veltrisonix.obex.Client1.CreateSession",
                             {"02:00:5E:10:00:01",
                              "{'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>}"}),
                  "(objectpath '/com/veltrisonix/obex/client/session0',)\n");
    }
    /// The properties of a device.
    std::string Properties(const std::string& path) {
        return CallDaemon(path, "org.freedesktop.DBus.Properties.GetAll",
                          {"com.veltrisonix.Device1"});
    }

    /// Runs a program that prints the signals of that bus name.
    Console& Monitor(const std::string& bus_name) {
        monitor_ =
            &Launch(Running({"gdbus", "monitor", "--address", bus_.Address(), "--dest", bus_name}));
        monitor_->Await("is owned by");
        return *monitor_;
    }

    static constexpr char kPath[] = "/com/veltrisonix/hci0/dev_02_00_5E_10_00_01";
    PrivateBus bus_;
    Console* console_ = nullptr;
    Console* monitor_ = nullptr;
};

TEST_F(ControlInterface, ExecutesCommands) {
    EXPECT_EQ(Execute("stall on"), "('Stalling of transfers is on\\n',)\n");
    EXPECT_EQ(Execute("# a comment"), "('',)\n");
    EXPECT_EQ(Execute("phones"), std::string("('") + kPath + "  02:00:5E:10:00:01  Aster\\n',)\n");
}

TEST_F(ControlInterface, AnswersQuit) {
    EXPECT_EQ(Execute("quit").find("('The simulator ends"), 0U);
    console_->ExpectExit(0);
}

TEST_F(ControlInterface, ReportsErrorsByName) {
    const std::string error = "Error: GDBus.Error:org.morvane.Simulator1.Error.";
    EXPECT_EQ(Execute("nonsense").find(error + "UnknownCommand: Unknown command: nonsense"), 0U);
    EXPECT_EQ(Execute("stall maybe").find(error + "InvalidArguments: "), 0U);
    EXPECT_EQ(Execute("close session").find(error + "NoSuchObject: "), 0U);
    EXPECT_EQ(Control("Reply", {"GetSize", "<42>", "0"}).find(error + "InvalidArguments: "), 0U);
    EXPECT_EQ(Control("AddDevice", {kPath, "{}"}).find(error + "Failed: "), 0U);
}

TEST_F(ControlInterface, IsExemptFromFaultsOfTheDaemon) {
    for (const char* const command :
         {"hang GetAll", "hang! Execute", "leave", "come-back", "crash"})
        EXPECT_EQ(Execute(command).find("('"), 0U) << command;
    EXPECT_NE(SetPassword().find("ServiceUnknown"), std::string::npos);
    EXPECT_EQ(Execute("come-back").find("('"), 0U);
    EXPECT_EQ(SetPassword(), "()\n");
}

TEST_F(ControlInterface, RefusesAndAnswersTheGivenNumberOfCalls) {
    EXPECT_EQ(Control("Refuse", {"SetPassword", "com.example.Error.No", "not today", "1"}), "()\n");
    EXPECT_EQ(SetPassword().find("Error: GDBus.Error:com.example.Error.No: not today"), 0U);
    EXPECT_EQ(SetPassword(), "()\n");
    EXPECT_EQ(Control("Reply", {"SetPassword", "<('text', <@ay []>)>", "1"}), "()\n");
    EXPECT_EQ(SetPassword(), "('text', <@ay []>)\n");
    EXPECT_EQ(SetPassword(), "()\n");
}

TEST_F(ControlInterface, HangsAndReleases) {
    Console& monitor = Monitor(kControl);
    EXPECT_EQ(Control("Hang", {"SetPassword", "1"}), "()\n");
    Console& caller = Launch(Running(
        {"gdbus", "call", "--address", bus_.Address(), "--dest", "com.veltrisonix", "--object-path",
         "/com/veltrisonix/obex", "--method", "com.veltrisonix.obex.Client1.SetPassword", "x"}));
    monitor.Await("'SetPassword', \"('x',)\", 'hangs'");
    EXPECT_EQ(Execute("release").find("('"), 0U);
    caller.Expect("()\n");
    caller.ExpectExit(0);
    monitor.Await("'SetPassword', \"('x',)\", 'reply', '', '()', 'hang')\n");
}

TEST_F(ControlInterface, OverridesProperties) {
    EXPECT_EQ(Control("OverrideProperty", {"*", "com.veltrisonix.Device1", "Alias", "<uint32 7>"}),
              "()\n");
    EXPECT_NE(Properties(kPath).find("'Alias': <uint32 7>"), std::string::npos);
}

TEST_F(ControlInterface, AnnouncesProperties) {
    Console& monitor = Monitor("com.veltrisonix");
    EXPECT_EQ(Control("Notify", {kPath, "com.veltrisonix.Device1", "{'Alias': <'Ann'>}"}), "()\n");
    monitor.Await("PropertiesChanged ('com.veltrisonix.Device1', {'Alias': <'Ann'>}, ");
}

TEST_F(ControlInterface, AddsDevicesWithExactlyTheGivenProperties) {
    EXPECT_EQ(Control("AddDevice", {"/a/device", "{'Alias': <byte 1>}"}), "()\n");
    EXPECT_EQ(Properties("/a/device"), "({'Alias': <byte 0x01>},)\n");
}

TEST_F(ControlInterface, ListsPhonesSessionsTransfersAndCalls) {
    EXPECT_EQ(Control("ListPhones"), std::string("([(objectpath '") + kPath +
                                         "', '02:00:5E:10:00:01', 'Aster', false, true)],)\n");
    EXPECT_EQ(Control("ListSessions"), "(@ao [],)\n");
    CreateSession();
    EXPECT_EQ(Control("ListSessions"), "([objectpath '/com/veltrisonix/obex/client/session0'],)\n");
    EXPECT_EQ(Control("ListTransfers"), "(@ao [],)\n");
    EXPECT_NE(Control("ListCalls")
                  .find("objectpath '/com/veltrisonix/obex', 'com.veltrisonix.obex.Client1', "
                        "'CreateSession', "),
              std::string::npos);
}

TEST_F(ControlInterface, SetsTheBytesThatPullsDownload) {
    EXPECT_EQ(Control("SetPullContent", {"[byte 0x41, 0x00, 0xff]"}), "()\n");
    CreateSession();
    Console& monitor = Monitor("com.veltrisonix");
    CallDaemon("/com/veltrisonix/obex/client/session0",
               "com.veltrisonix.obex.PhonebookAccess1.PullAll", {directory_.File("pulled"), "{}"});
    monitor.Await("'Status': <'complete'>");
    std::ifstream file(directory_.File("pulled"), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string("A\0\xff", 3));
}

TEST_F(ControlInterface, AnnouncesCallsAndAnswers) {
    Console& monitor = Monitor(kControl);
    SetPassword();
    const std::string call =
        "'/com/veltrisonix/obex', 'com.veltrisonix.obex.Client1', 'SetPassword', \"('x',)\"";
    monitor.Await("org.morvane.Simulator1.CallArrived (");
    monitor.Await(call + ")\n");
    monitor.Await("org.morvane.Simulator1.CallAnswered (");
    monitor.Await(call + ", 'reply', '', '()', '')\n");
}

TEST(ControlName, EndsWithTheInstance) {
    EXPECT_EQ(ControlName(""), kControl);
    EXPECT_EQ(ControlName("second"), "org.morvane.Simulator.second");
}

class ControlOnStrictBus : public ProgramTest {};

TEST_F(ControlOnStrictBus, DaemonServesWithoutControlInterface) {
    const PrivateBus bus(
        "<policy context=\"default\"><allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
        "<allow own=\"com.veltrisonix\"/></policy>");
    Console& console = Serve(bus.Address());
    console.ExpectError("morvane-simulator: It cannot be controlled by --tell: ");
    console.AllowStderr("org.morvane.Simulator");
    EXPECT_EQ(Gdbus(bus.Address(), "com.veltrisonix", "/com/veltrisonix/obex",
                    "com.veltrisonix.obex.Client1.SetPassword", {"x"}),
              "()\n");
    Quit(console);
}

}  // namespace
}  // namespace simulator
