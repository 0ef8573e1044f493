#include "support/conversation.h"

#include "support/bus_monitor.h"

#include <fstream>
#include <iterator>

namespace morvane_test {
namespace {

using simulator::kAnyPath;
using simulator::kPhonebookInterface;
using simulator::kSessionInterface;

class SessionTest : public ConversationTest {
  protected:
    void OverrideEverywhere(const char* interface, const char* property, const char* value) {
        daemon().OverrideProperty(kAnyPath, interface, property, Value(value));
    }
};

TEST_F(SessionTest, PrintsPropertiesWhenOpened) {
    Start();
    OverrideEverywhere(kSessionInterface, "Source", "'source %s%n'");
    OverrideEverywhere(kSessionInterface, "Destination", "''");
    OverrideEverywhere(kSessionInterface, "Target", "'target'");
    OverrideEverywhere(kSessionInterface, "Channel", "uint16 65535");
    OverrideEverywhere(kPhonebookInterface, "FixedImageSize", "false");
    ChooseDevice();
    Expect(Lines({"Session Connected", "Source Address: source %s%n", "Destination Address: ",
                  "Target UUID: target", "Channel: 65535", "Fixed Image Size: Not Supported"}) +
           kPhonebookPrompt);
}

TEST_F(SessionTest, IsConnectedOnlyInStateFive) {
    Start();
    console().AllowStderr("GLib-GIO-WARNING .* does not match expected type");
    const auto expect_loss = [this] {
        ChooseDevice();
        Expect(Normal("Session Disconnected\n"));
        Await(Normal("Fixed Image Size: Supported\n"));
        Expect(kClientGone + Prompt());
    };
    for (const char* const state : {"byte 0", "byte 4", "byte 6", "byte 255", "uint32 5"}) {
        OverrideEverywhere(kSessionInterface, "ConnectionState", state);
        expect_loss();
    }
    daemon().HideProperty(kAnyPath, kSessionInterface, "ConnectionState");
    expect_loss();
    EXPECT_EQ(CountCalls("RemoveSession"), 6U);
}

TEST_F(SessionTest, UsesPathFromReply) {
    Start();
    daemon().Reply("CreateSession", Value("(objectpath '/elsewhere',)"));
    ChooseDevice();
    Expect(UnknownSession("Disconnected") + kClientGone +
           Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: "
               "No such session: /elsewhere\n") +
           Prompt());
    ExpectCall("RemoveSession", "(objectpath '/elsewhere',)");
}

TEST_F(SessionTest, StartsWithoutSelectedPhonebook) {
    OpenSelectedSession();
    Enter("x", Prompt());
    OpenSession();
    Enter("g", Red("No Phonebook selected\n") + kPhonebookPrompt);
}

// A bus that can be reconfigured so that no proxy can be created.
class UnreachableObjectTest : public SessionTest {
  protected:
    void RefuseProxies() {
        Deny(bus().ConfigurationFile());
        const auto connection = ConnectToBus(bus().Address());
        CallOnBus(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                  "org.freedesktop.DBus", "ReloadConfig");
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

TEST_F(UnreachableObjectTest, PhonebookProxyFailureIsReportedInMainMenu) {
    Start();
    RefuseProxies();
    ChooseDevice();
    ExpectFailure("Phonebook", Prompt());
    // The session still exists in the daemon and can be removed.
    Enter("r", Prompt());
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(UnreachableObjectTest, SessionProxyFailureIsReportedInMainMenu) {
    Start();
    BusMonitor monitor(bus().Address(), "GetAll");
    daemon().Hang("GetAll", 1);
    ChooseDevice();
    monitor.AwaitCall();
    RefuseProxies();
    daemon().Release();
    ExpectFailure("Session", Prompt());
}

TEST_F(UnreachableObjectTest, TransferProxyFailureIsReportedInPhonebookMenu) {
    OpenSelectedSession();
    RefuseProxies();
    for (const std::string method : {"PullAll", "Pull"}) {
        for (const std::string& line : OperationOf(method).lines) Type(line);
        Await(Prompt(kFilterMenu));
        Type("d");
        ExpectFailure("Transfer", kPhonebookPrompt);
    }
}

}  // namespace
}  // namespace morvane_test
