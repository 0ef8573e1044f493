#include "simulator/daemon.h"
#include "support/bus_monitor.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <iterator>
#include <string>
#include <thread>

namespace morvane_test {
namespace {

const std::string kOpenedSession = kClient + "/client/session0";

class StartStopTest : public ConversationTest {
  protected:
    /// Starts the tool up to the main prompt, while its main thread waits for the daemon's objects.
    void LaunchWithPendingDiscovery() {
        StartDaemon().Hang("GetManagedObjects");
        BusMonitor monitor(bus().Address(), "GetManagedObjects");
        Launch();
        Expect(Red("Run menu\n") + Banner() + Prompt());
        monitor.AwaitCall();
    }

    std::ptrdiff_t Threads() {
        const std::filesystem::directory_iterator threads(
            "/proc/" + std::to_string(console().ProcessId()) + "/task");
        return std::distance(begin(threads), end(threads));
    }

    void AwaitThreads(std::ptrdiff_t count) {
        const auto deadline = std::chrono::steady_clock::now() + Patience();
        while (Threads() > count) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << Threads() << " threads";
            std::this_thread::yield();
        }
    }
};

class LateDiscoveryTest : public StartStopTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(QuitOrEndOfInput, LateDiscoveryTest, testing::Values("q\n", "\x04"));

TEST_P(LateDiscoveryTest, ExitsAfterDiscovery) {
    LaunchWithPendingDiscovery();
    const std::ptrdiff_t threads = Threads();
    console().TypeBytes(GetParam());
    AwaitThreads(threads - 1);
    daemon().Release();
    Expect(Normal("Found Client " + kClient + "\n"));
    ExpectExit(0);
}

TEST_F(StartStopTest, PrintsNothingAfterQuitBeforeMainLoop) {
    StartDaemon().Hang("GetAll");
    BusMonitor monitor(bus().Address(), "GetAll");
    Launch();
    monitor.AwaitCall();
    Await(Prompt());
    daemon().AddDevice("/dev_late", kPhoneAddress, kPhoneAlias);
    const std::ptrdiff_t threads = Threads();
    console().TypeBytes("q\n");
    AwaitThreads(threads - 1);
    daemon().Release();
    ExpectExit(0);
}

TEST_F(StartStopTest, HandlesControlCBeforeMainLoop) {
    LaunchWithPendingDiscovery();
    AwaitEndOfMainLoop([this] {
        console().Interrupt();
        daemon().Release();
        Expect(Notification("", "Found Client " + kClient + "\n"));
    });
    Type("l");
    ExpectExit(0);
}

TEST_F(StartStopTest, ExitsIfObjectManagerFailsAfterPrompt) {
    LaunchWithPendingDiscovery();
    daemon().Crash();
    console().ExpectError(
        "Error getting object manager client: GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
        "Message recipient disconnected from message bus without replying\n");
    EXPECT_FALSE(console().HasEnded());
    console().TypeBytes("h\nh\n");  // the first may be read before the error is handled
    ExpectExit(0, Console::Rest::kIgnored);
}

// Without the main loop there is no handler for Ctrl-C, and the menu still waits for a line.
TEST_F(StartStopTest, ControlCTerminatesAfterObjectManagerFailed) {
    LaunchWithPendingDiscovery();
    daemon().Crash();
    console().ExpectError("Error getting object manager client: ");
    // The first signal may arrive while the handler is being removed.
    const auto deadline = std::chrono::steady_clock::now() + Patience();
    while (!console().HasEnded() && std::chrono::steady_clock::now() < deadline) {
        console().Interrupt();
        std::this_thread::yield();
    }
    console().ExpectEndBySignal(SIGINT);
}

TEST_F(StartStopTest, SecondControlCTerminatesDuringCall) {
    StartDaemon();
    Start();
    HangInCall();
    Interrupt();
    EXPECT_FALSE(console().HasEnded());
    console().Interrupt();
    console().ExpectEndBySignal(SIGINT);
}

TEST_F(StartStopTest, LossOfBusTerminatesDuringCall) {
    StartDaemon();
    Start();
    HangInCall();
    bus().Kill();
    console().ExpectEndBySignal(SIGTERM);
}

// The session that the daemon did not remove exists until the process ends.
TEST_F(StartStopTest, RemovesFileOfSessionThatDaemonDidNotRemove) {
    OpenSelectedSession();
    PullAll("one");
    daemon().Refuse("RemoveSession", "com.veltrisonix.Error.Failed", "Busy");
    Enter("q", Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Busy\n") +
                   Normal("Removing: " + PulledPhonebook() + "\n"));
    ExpectExit(0);
    EXPECT_FALSE(std::filesystem::exists(PulledPhonebook()));
}

// The menus return normally after the client has been removed.
TEST_F(StartStopTest, ExitsFromFilterMenuWithoutClientAndMainLoop) {
    OpenSelectedSession();
    EnterAndAwait("a", Prompt(kFilterMenu));
    RemoveClient(kFilterMenu);
    Interrupt();
    console().CloseInput();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

// The context may be destroyed during the delivery of a notification.
TEST_F(StartStopTest, ClosesSessionDuringNotifications) {
    OpenSession();
    const auto flood = std::async(std::launch::async, [this] {
        daemon().Flood(kOpenedSession, simulator::kSessionInterface, "Channel", 5000,
                       [](std::size_t i) { return g_variant_new_uint16(static_cast<guint16>(i)); });
    });
    Await("Channel Attribute Received: ");
    EnterAndAwait("x", Prompt());
}

// robustness/input_torture_test.cpp tests signals and end of input at every prompt.
class ShutDown : public ConversationTest {};

TEST_F(ShutDown, QuitsOnLineTypedBeforePrompt) {
    Launch();
    EnterAndAwait("q", Banner() + Prompt());
    ExpectExit(0);
}

TEST_F(ShutDown, ExitsOnInterruptDuringStartPause) {
    StartDaemon();
    Launch();
    Await("Found Client ");
    Interrupt();
    Type("h");
    ExpectExit(0, Console::Rest::kIgnored);
}

TEST_F(ShutDown, OtherSignalsTerminate) {
    for (const int number : {SIGTERM, SIGQUIT}) {
        Start();
        console().Signal(number);
        console().ExpectEndBySignal(number);
    }
}

}  // namespace
}  // namespace morvane_test
