#include "simulator/daemon.h"
#include "support/bus_monitor.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kDevice = "/com/veltrisonix/hci0/dev_1";

// The line for an object that was found, with or without a displayed prompt.
std::string FoundLine(const std::string& kind, const std::string& path) {
    return kResetSequence + ("Found " + kind + " " + path + "\n");
}

class DiscoveryTest : public ConversationTest {
  protected:
    /// Adds a device without waiting for the tool to process it.
    void Publish(const std::string& path, const std::string& alias = "Phone") {
        daemon().AddDevice(path, kPhoneAddress, alias);
    }

    /// Starts the tool and expects no other output before the main prompt.
    void LaunchAlone() {
        Launch();
        Expect(Red("Run menu\n") + Banner() + Prompt());
    }
};

TEST_F(DiscoveryTest, ReportsExistingObjectsAtStart) {
    StartDaemon();
    Publish(kDevice);
    Publish("/com/veltrisonix/hci0/dev");
    Launch();
    AwaitAll({FoundLine("Client", kClient), FoundLine("Device", kDevice), Banner()});
    Await(Red(" > "));
    const std::string output = console().Output();
    EXPECT_EQ(output.find("Found", output.rfind("Found Client")), output.rfind("Found Client"));
    ExpectList({"00:1B:DC:07:31:9A | Phone"});
}

TEST_F(DiscoveryTest, ListsDevicesFoundBeforeClient) {
    StartDaemon().RemoveClient();
    LaunchAlone();
    AddDevice(kDevice, kPhoneAddress, "Phone");
    Enter("l", kNoClient + Prompt());
    ReturnClient();
    ExpectList({"00:1B:DC:07:31:9A | Phone"});
}

TEST_F(DiscoveryTest, UsesOnlyTheRequestedInstance) {
    auto options = simulator::Options::Scripted();
    options.instance = "bench.b2";
    StartDaemon(options);
    Publish(kDevice);
    simulator::Daemon other(bus().Address(), simulator::Options::Scripted());
    other.AddDevice("/dev_other", kPhoneAddress, "Other Phone");
    Start(WithArguments({"-bus:bench.b2"}));
    EXPECT_EQ(console().Output().find("dev_other"), std::string::npos);
    ExpectList({"00:1B:DC:07:31:9A | Phone"});
    other.AddDevice("/dev_another", kPhoneAddress, "Another Phone");
    ExpectNoOutput();
    EnterAndAwait("u", ValuePrompt("/User Id"));
    Type("me");
    ExpectCall("SetUserId", "('me',)");
    EXPECT_TRUE(other.Calls().empty());
}

TEST_F(DiscoveryTest, FindsObjectsWhenDaemonStarts) {
    LaunchAlone();
    Enter("c", kNoClient + Prompt());
    StartDaemon();
    Expect(Notification("", "Found Client " + kClient + "\n"));
    AddDevice(kDevice, kPhoneAddress, "Phone");
    ExpectList({"00:1B:DC:07:31:9A | Phone"});
}

// The bus may be able to activate the daemon.
TEST_F(DiscoveryTest, RequestsDaemonActivationFromBus) {
    for (const std::string instance : {"", "bench"}) {
        ConsoleOptions options;
        if (!instance.empty()) options.arguments = {"-bus:" + instance};
        BusMonitor monitor(bus().Address(), "StartServiceByName",
                           instance.empty() ? "com.veltrisonix" : "com.veltrisonix." + instance);
        Launch(options);
        monitor.AwaitCall();
        Await(Prompt());
    }
}

// Additions are processed immediately, removals at the next prompt. The message of a removal may
// be printed before or after that prompt.
TEST_F(DiscoveryTest, AddsDevicesDuringCallAndRemovesThemAtNextPrompt) {
    StartDaemon();
    Publish(kDevice);
    Start();
    HangInCall();
    for (const char* const path : {"/dev_2", "/dev_3"}) {
        Publish(path, path);
        Expect(Normal("Found Device " + std::string(path) + "\n"));
    }
    daemon().RemoveDevice(kDevice);
    daemon().Release();
    AwaitAll({kRedSequence + ("Removed " + kDevice + "\n"), Prompt()});
    EnterAndAwait(
        "l", DeviceList({"00:1B:DC:07:31:9A | /dev_2", "00:1B:DC:07:31:9A | /dev_3"}) + Prompt());
}

// A proxy of a closed session must not report that the daemon disconnects.
TEST_F(DiscoveryTest, DoesNotReportClosedSessionWhenDaemonDisconnects) {
    OpenSession();
    Enter("x", Prompt());
    daemon().LeaveBus();
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n"});
    daemon().ReturnToBus();
    AwaitAll({"Found Client " + kClient + "\n", std::string("Found Device ") + kPhonePath + "\n"});
    EXPECT_EQ(console().Output().find("Unknown"), std::string::npos);
    EXPECT_EQ(console().Output().find("Received"), std::string::npos);
}

TEST_F(DiscoveryTest, ExitsIfGetManagedObjectsFails) {
    StartDaemon().Refuse("GetManagedObjects", "com.veltrisonix.Error.Failed", "Not today");
    Launch();
    console().ExpectError(
        "Error getting object manager client: "
        "GDBus.Error:com.veltrisonix.Error.Failed: Not today\n");
    Expect(Red("Run menu\n") + Banner());
    ExpectExitUnlessPrompted();
}

}  // namespace
}  // namespace morvane_test
