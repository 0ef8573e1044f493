#include "support/conversation.h"

#include "support/bus_monitor.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace morvane_test {
namespace {

using simulator::kAnyPath;
using simulator::kPhonebookInterface;
using simulator::kSessionInterface;

const std::string kPhonebookGone = Red("Phonebook Access Proxy is invalid\n") + Prompt();

class SessionTest : public ConversationTest {
  protected:
    void OverrideEverywhere(const char* interface, const char* property, const char* value) {
        daemon().OverrideProperty(kAnyPath, interface, property, Value(value));
    }

    // Leads to the transfer menu; the transfer has ended and is silent from now on.
    void HoldTransfer(Here here = Here::Now()) {
        OpenSelectedSession(here);
        PullAll("BEGIN:VCARD", here);
        daemon().AbortTransfer(Transfer());
        Expect(Notice(kTransferMenu, "Status Attribute Received: error\n"), here);
        ASSERT_TRUE(std::filesystem::exists(PulledPhonebook()));
    }

    std::string Removing() const { return "Removing: " + PulledPhonebook() + "\n"; }
    bool FileIsThere() const { return std::filesystem::exists(PulledPhonebook()); }
};

TEST_F(SessionTest, PrintsItsPropertiesWhenItOpens) {
    Start();
    ChooseDevice();
    Expect(OpenedSession(kPhoneAddress) + Prompt(kPhonebookMenu));
    Type("x");
    Expect(Prompt());

    OverrideEverywhere(kSessionInterface, "Source", "'source %s%n'");
    OverrideEverywhere(kSessionInterface, "Destination", "''");
    OverrideEverywhere(kSessionInterface, "Target", "'target'");
    OverrideEverywhere(kSessionInterface, "Channel", "uint16 65535");
    OverrideEverywhere(kPhonebookInterface, "FixedImageSize", "false");
    ChooseDevice();
    Expect(Lines({"Session Connected", "Source Address: source %s%n", "Destination Address: ",
                  "Target UUID: target", "Channel: 65535", "Fixed Image Size: Not Supported"}) +
           Prompt(kPhonebookMenu));
}

TEST_F(SessionTest, NamesAbsentPropertiesUnknown) {
    Start();
    for (const char* const property : {"Source", "Destination", "Target", "Channel"})
        daemon().HideProperty(kAnyPath, kSessionInterface, property);
    daemon().HideProperty(kAnyPath, kPhonebookInterface, "FixedImageSize");
    ChooseDevice();
    Expect(UnknownSession("Connected") + Prompt(kPhonebookMenu));
}

TEST_F(SessionTest, TreatsPropertiesOfAnotherTypeAsAbsent) {
    Start();
    console().AllowStderr("GLib-GIO-WARNING .* does not match expected type");
    OverrideEverywhere(kSessionInterface, "Source", "uint32 7");
    OverrideEverywhere(kSessionInterface, "Destination", "['a', 'b']");
    OverrideEverywhere(kSessionInterface, "Target", "objectpath '/target'");
    OverrideEverywhere(kSessionInterface, "Channel", "'19'");
    OverrideEverywhere(kSessionInterface, "ConnectionState", "uint32 5");
    OverrideEverywhere(kPhonebookInterface, "FixedImageSize", "1");
    ChooseDevice();
    Expect(UnknownSession("Disconnected") + kClientGone + Prompt());
}

TEST_F(SessionTest, IsConnectedInStateFiveOnly) {
    Start();
    for (const char* const state : {"byte 0", "byte 4", "byte 6", "byte 255"}) {
        OverrideEverywhere(kSessionInterface, "ConnectionState", state);
        ChooseDevice();
        Expect(Normal("Session Disconnected\n"));
        Await(Normal("Fixed Image Size: Supported\n"));
        Expect(kClientGone + Prompt());
    }
    EXPECT_EQ(CountCalls("RemoveSession"), 4U);
    daemon().HideProperty(kAnyPath, kSessionInterface, "ConnectionState");
    ChooseDevice();
    Expect(Normal("Session Disconnected\n"));
    Await(kClientGone + Prompt());
}

TEST_F(SessionTest, LivesOnThePathThatTheDaemonGave) {
    Start();
    daemon().Reply("CreateSession", Value("(objectpath '/elsewhere',)"));
    ChooseDevice();
    Expect(UnknownSession("Disconnected") + Red("Client Proxy is invalid\n") +
           Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: "
               "No such session: /elsewhere\n") +
           Prompt());
    ExpectCall("RemoveSession", "(objectpath '/elsewhere',)");
}

TEST_F(SessionTest, BelongsToTheInstance) {
    StartInstance("bench");
    ChooseDevice();
    Expect(OpenedSession(kPhoneAddress) + Prompt(kPhonebookMenu));
    SelectPhonebook();
    Type("x");
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
    Expect(Prompt());
}

TEST_F(SessionTest, SaysNothingOfALostConnectionUntilTheNextKey) {
    OpenSelectedSession();
    daemon().SetConnectionState(Session(), 4);
    ExpectQuiet(kPhonebookMenu);
    Type("g");
    Expect(kClientGone + Prompt());
    EXPECT_EQ(CountCalls("GetSize"), 0U);
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(SessionTest, IsValidAgainWhenItsConnectionReturnsInTime) {
    OpenSession();
    daemon().SetConnectionState(Session(), 0);
    daemon().SetConnectionState(Session(), 5);
    ExpectQuiet(kPhonebookMenu);
    Type("u");
    Expect(Normal("Counters updated\n") + Prompt(kPhonebookMenu));
    daemon().Invalidate(Session(), kSessionInterface, "ConnectionState");
    ExpectQuiet(kPhonebookMenu);
    Type("u");
    Expect(kClientGone + Prompt());
}

TEST_F(SessionTest, StartsWithoutSelectionEachTime) {
    OpenSession();
    Type("g");
    Expect(Red("No Phonebook selected\n") + Prompt(kPhonebookMenu));
    SelectPhonebook();
    Type("x");
    Expect(Prompt());
    OpenSession();
    Type("g");
    Expect(Red("No Phonebook selected\n") + Prompt(kPhonebookMenu));
}

TEST_F(SessionTest, DeletesTheHeldFileWhenItIsRemoved) {
    HoldTransfer();
    LoseConnection(kTransferMenu);
    Type("s");
    Expect(Red("Phonebook Access Proxy is invalid\n") + Normal(Removing()) + Prompt());
    EXPECT_FALSE(FileIsThere());
}

TEST_F(SessionTest, DeletesTheHeldFileWhenTheDaemonDies) {
    HoldTransfer();
    daemon().Crash();
    AwaitAll({Removing(), "Removed /com/veltrisonix/obex\n",
              std::string("Removed ") + kPhonePath + "\n"});
    EXPECT_FALSE(FileIsThere());
    Type("s");
    Await(kPhonebookGone);
    EXPECT_EQ(console().Output().find("Unknown"), std::string::npos);
}

// Whatever still listened for the session would report that its properties are gone.
TEST_F(SessionTest, LeavesNothingBehindThatHearsTheDaemonGo) {
    OpenSession();
    const std::string session = Session();
    Type("x");
    Expect(Prompt());
    daemon().Notify(session, kSessionInterface, "Source", Value("'nobody hears this'"));
    ExpectQuiet();
    daemon().Crash();
    AwaitAll({"Removed /com/veltrisonix/obex\n", std::string("Removed ") + kPhonePath + "\n"});
    daemon().ReturnToBus();
    AwaitAll({"Found Client /com/veltrisonix/obex\n", std::string("Found Device ") + kPhonePath});
    EXPECT_EQ(console().Output().find("Attribute Received"), std::string::npos);
    EXPECT_EQ(console().Output().find("Unknown"), std::string::npos);
}

// A bus that, from a moment on, lets nobody make a proxy.
class UnreachableObjectTest : public SessionTest {
  protected:
    void RefuseProxies() {
        Deny(bus().ConfigurationFile());
        const auto connection = ConnectToBus(bus().Address());
        const morvane::VariantPtr reply(g_dbus_connection_call_sync(
            connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus", "ReloadConfig", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
            nullptr, nullptr));
        ASSERT_NE(reply, nullptr);
    }

    void ExpectFailure(const std::string& kind, const std::string& prompt,
                       Here here = Here::Now()) {
        Expect(kRedSequence +
                   ("Failed to allocate " + kind +
                    " proxy. Message: Error calling StartServiceByName for com.veltrisonix: "
                    "Rejected send message"),
               here);
        Await(std::string("\n") + kResetSequence, here);
        Expect(prompt, here);
    }

  private:
    static void Deny(const std::string& configuration) {
        std::ifstream file(configuration);
        std::string text(std::istreambuf_iterator<char>(file), {});
        text.insert(text.rfind("</busconfig>"),
                    "<policy context=\"default\"><deny send_destination=\"org.freedesktop.DBus\" "
                    "send_interface=\"org.freedesktop.DBus\" "
                    "send_member=\"StartServiceByName\"/></policy>");
        std::ofstream(configuration) << text;
    }
};

TEST_F(UnreachableObjectTest, PhonebookIsReportedByTheMainMenu) {
    Start();
    RefuseProxies();
    ChooseDevice();
    ExpectFailure("Phonebook", Prompt());
    // The daemon's session is still there to be removed.
    Type("r");
    Expect(Prompt());
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(UnreachableObjectTest, SessionIsReportedByTheMainMenu) {
    Start();
    BusMonitor monitor(bus().Address(), "GetAll");
    daemon().Hang("GetAll", 1);
    ChooseDevice();
    monitor.AwaitCall();
    RefuseProxies();
    daemon().Release();
    ExpectFailure("Session", Prompt());
}

TEST_F(UnreachableObjectTest, TransferIsReportedByThePhonebookMenu) {
    OpenSelectedSession();
    RefuseProxies();
    daemon().SetPullContent("BEGIN:VCARD");
    Type("a");
    Await(Prompt(kFilterMenu));
    Type("d");
    ExpectFailure("Transfer", Prompt(kPhonebookMenu));
    Type("p");
    Await(ValuePrompt("/vCard Handle"));
    Type("1");
    Await(Prompt(kFilterMenu));
    Type("d");
    ExpectFailure("Transfer", Prompt(kPhonebookMenu));
    Type("u");
    Expect(Normal("Counters updated\n") + Prompt(kPhonebookMenu));
}

}  // namespace
}  // namespace morvane_test
