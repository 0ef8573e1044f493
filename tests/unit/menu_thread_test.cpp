#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/competing_thread.h"
#include "unit/simulated_bus.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace morvane_test {
namespace {

using morvane::obexProxy;

// Pauses let the main thread print its messages. After a blank line the input function asks again
// by itself.
TEST(MenuThreadTest, PausesBeforeBannerAndPromptsButNotAfterBlankLine) {
    const auto run = [] {
        sleep_substitute = [](useconds_t microseconds) {
            morvane::PROXY_PrintNoPrompt(morvane::kNormal, "[%g ms]", microseconds / 1e3);
        };
        obexProxy.MenuThread();
    };
    const std::string refused = Red("No Client available, start daemon.\n");
    const std::string asked = Normal("[200 ms]") + Prompt();
    EXPECT_EQ(OutputOf(run, "h\nz\n\n \nq\n"), Normal("[500 ms]") + Banner() + asked + refused +
                                                   asked + refused + asked + Prompt() + Prompt());
}

TEST(MenuThreadTest, DisplaysNoPromptAfterObjectManagerFailed) {
    const std::string output = OutputOf([] {
        obexProxy.DBusInstance("7");
        sleep_substitute = [](useconds_t /*time*/) {
            std::thread([] { obexProxy.GDBusRun(); }).join();
        };
        obexProxy.MenuThread();
    });
    EXPECT_EQ(output, Red("Error getting object manager client\n") + Banner());
}

// The menu thread has the registry locked from its start, except while it waits for input.
TEST(MenuThreadTest, BlocksRemovalsDuringBannerAndPauses) {
    const std::string begin = Banner() + Normal("end of pause\n");
    for (const bool in_pause : {false, true}) {
        const std::string output = OutputOf([in_pause] {
            CompetingThread removal([] { obexProxy.ObjectRemoved("/dev_1"); });
            PinToOneProcessor();
            bool has_begun = false;
            const auto begin_removal = [&] {
                if (std::exchange(has_begun, true)) return;
                removal.RunUntilBlocked();
                LowerPriority();
            };
            write_substitute = [&](const void* bytes, std::size_t count) {
                if (!in_pause) begin_removal();
                return RealWrite(bytes, count);
            };
            sleep_substitute = [&](useconds_t time) {
                if (time == 500000) return;
                if (in_pause) begin_removal();
                morvane::PROXY_Print(morvane::kNormal, "end of pause\n");
            };
            obexProxy.MenuThread();
            removal.Join();
            write_substitute = nullptr;
        });
        EXPECT_EQ(output.substr(0, begin.size()), begin) << "in the pause: " << in_pause;
        EXPECT_NE(output.find("Removed /dev_1\n"), output.npos);
    }
}

// With lines typed ahead, the menu thread would lock the mutex again before a waiting removal wakes
// up.
TEST(MenuThreadTest, YieldsToWaitingRemovalBeforePrompt) {
    const auto run = [] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(simulator::kClientPath);
        bus.OpenSession();
        CompetingThread removal([] { obexProxy.FreeClient(); });
        // Called while the removal owns the mutex.
        remove_substitute = [menu_thread = gettid()](const char* /*name*/) {
            PrintLine(AwaitSleep(menu_thread) ? "file deleted" : "menu thread not blocked");
        };
        sleep_substitute = [&](useconds_t time) {
            if (time != 500000) removal.RunUntilBlocked();
        };
        obexProxy.MenuThread();
        removal.Join();
        remove_substitute = nullptr;  // the bus removes its directory
    };
    const std::string output = OutputOf(run, "q\n");
    EXPECT_NE(output.find(Lines({"file deleted"}) + Prompt()), output.npos) << output;
}

TEST(StartHandshakeTest, ReturnsIfMenuThreadHasAlreadyEnded) {
    const std::string output = OutputOf([] {
        std::thread([] { obexProxy.MenuThread(); }).join();
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        obexProxy.AwaitMenuThread(start_lock);
        PrintLine(obexProxy.IsRunning() ? "running" : "stopped");
    });
    EXPECT_EQ(output, Banner() + Prompt() + Lines({"stopped"}));
}

// Otherwise the wake-up would be lost between the main thread's check and its wait.
TEST(StartHandshakeTest, MenuThreadWaitsUntilMainThreadWaits) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        CompetingThread menu_thread([] { obexProxy.MenuThread(); });
        sleep_substitute = [](useconds_t /*time*/) { PrintLine("pause"); };
        menu_thread.RunUntilBlocked();
        PrintLine("before the wait");
        obexProxy.AwaitMenuThread(start_lock);
    });
    const std::string pause = Lines({"pause"});
    EXPECT_EQ(output, Lines({"before the wait"}) + pause + Banner() + pause + Prompt());
}

TEST(StartHandshakeTest, MainThreadWaitsForMenuThread) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        PrintLine(obexProxy.IsRunning() ? "running" : "not yet");
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        obexProxy.AwaitMenuThread(start_lock);
        PrintLine(obexProxy.IsRunning() ? "running" : "not yet");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"not yet", "running"}) + Banner() + Prompt());
}

// ThreadSanitizer reports a data race here if a lock is missing.
TEST(StopThreadsTest, IsSafeWhileMainLoopIsCreated) {
    const std::string output = OutputOf([] {
        obexProxy.DBusInstance("7");
        std::thread other([] {
            for (int count = 0; count < 1000; ++count) obexProxy.StopThreads();
        });
        obexProxy.GDBusRun();
        other.join();
    });
    EXPECT_EQ(output, Red("Error getting object manager client\n"));
}

// After the handler has been removed, the next Ctrl-C terminates the process.
TEST(TerminationHandlerTest, StopsMenusAndRemovesItself) {
    const std::string output = OutputOf([] {
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        while (!obexProxy.IsRunning()) std::this_thread::yield();
        PrintLine(morvane::terminationHandler(nullptr) == G_SOURCE_REMOVE ? "removed" : "kept");
        PrintLine(obexProxy.IsRunning() ? "running" : "stopped");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"removed", "stopped"}) + Banner());
}

}  // namespace
}  // namespace morvane_test
