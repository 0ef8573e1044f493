#include "support/bus_monitor.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace morvane_test {
namespace {

const std::string kRunMenu = Red("Run menu\n");

#ifdef __SANITIZE_THREAD__
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif

const bool kLauncher = std::getenv("MORVANE_TEST_LAUNCHER") != nullptr;

class StartUp : public ConversationTest {};

TEST_F(StartUp, ExitsWithoutBus) {
    ConsoleOptions options;
    options.bus_address = SocketAddress(directory().File("nothing"));
    Launch(options);
    console().ExpectError(
        "Error getting object manager client: Could not connect: No such file or directory\n");
    Expect(kRunMenu + Banner());
    ExpectExitUnlessPrompted();
}

TEST_F(StartUp, ReportsFailureToStartThread) {
    if (kThreadSanitizer) GTEST_SKIP() << "ThreadSanitizer sets its own limits";
    if (kLauncher) GTEST_SKIP() << "launchers do not apply this limit";
    ConsoleOptions options;
    // A stack of 200 TiB does not fit into the address space.
    options.prefix = {"/bin/sh", "-c", "ulimit -s 214748364800; exec \"$@\"", "sh"};
    Launch(options);
    Expect(Red("Resource temporarily unavailable\n"));
    ExpectExit(1);
}

// Starts the tool with some descriptors closed by the shell redirections `closing`.
class ClosedStreams : public ConversationTest {
  protected:
    void SetUp() override {
        if (kLauncher) GTEST_SKIP() << "a launcher opens files of its own";
    }

    void LaunchClosing(const std::string& closing) {
        ConsoleOptions options;
        options.prefix = {"/bin/sh", "-c", "exec \"$@\" " + closing, "sh"};
        Launch(options);
    }

    std::string OpenedAs(int descriptor) {
        return std::filesystem::read_symlink("/proc/" + std::to_string(console().ProcessId()) +
                                             "/fd/" + std::to_string(descriptor));
    }
};

TEST_F(ClosedStreams, ClosedInputIsEndOfInput) {
    LaunchClosing("<&-");
    Expect(kRunMenu + Banner() + Prompt());
    ExpectExit(0);
}

TEST_F(ClosedStreams, AllStreamsCanBeClosed) {
    LaunchClosing("<&- >&- 2>&-");
    ExpectExit(0);
}

TEST_F(ClosedStreams, OnlyClosedStreamsAreReplacedByDevNull) {
    StartDaemon();
    BusMonitor monitor(bus().Address(), "GetManagedObjects");
    LaunchClosing(">&- 2>&-");
    monitor.AwaitCall();
    EXPECT_EQ(OpenedAs(1), "/dev/null");
    EXPECT_EQ(OpenedAs(2), "/dev/null");
    EXPECT_NE(OpenedAs(3), "/dev/null");
    Type("q");
    ExpectExit(0);
}

}  // namespace
}  // namespace morvane_test
