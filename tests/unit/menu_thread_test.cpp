#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"
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

// The pauses are for messages of the main thread. After a blank line the input itself asks again.
TEST(MenuThreadTest, PausesBeforeTheBannerAndEachPromptButNotAfterABlankLine) {
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

// From its start the menu thread owns the registry, except while it waits for the operator.
TEST(MenuThreadTest, LetsNothingBeRemovedWhileItDrawsTheBannerOrPauses) {
    const std::string begin = Banner() + Normal("pause is over\n");
    for (const bool in_pause : {false, true}) {
        const std::string output = OutputOf([in_pause] {
            Rival removal([] { obexProxy.ObjectRemoved("/dev_1"); });
            StayOnOneProcessor();
            bool has_begun = false;
            const auto begin_removal = [&] {
                if (std::exchange(has_begun, true)) return;
                removal.GoAsFarAsPossible();
                StayBehindOtherThreads();
            };
            write_substitute = [&](const void* bytes, std::size_t count) {
                if (!in_pause) begin_removal();
                return RealWrite(bytes, count);
            };
            sleep_substitute = [&](useconds_t time) {
                if (time == 500000) return;
                if (in_pause) begin_removal();
                morvane::PROXY_Print(morvane::kNormal, "pause is over\n");
            };
            obexProxy.MenuThread();
            removal.Join();
            write_substitute = nullptr;
        });
        EXPECT_EQ(output.substr(0, begin.size()), begin) << "in the pause: " << in_pause;
        EXPECT_NE(output.find("Removed /dev_1\n"), output.npos);
    }
}

// With lines typed ahead, the menu thread would lock the mutex again before a removal wakes up.
TEST(MenuThreadTest, LetsAWaitingRemovalPassBeforeItAsks) {
    const auto run = [] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(simulator::kClientPath);
        bus.OpenSession();
        Rival removal([] { obexProxy.FreeClient(); });
        // The session's file is deleted during the removal's turn.
        remove_substitute = [menu_thread = gettid()](const char* /*name*/) {
            Say(AwaitSleep(menu_thread) ? "file deleted" : "the menu does not wait");
        };
        sleep_substitute = [&](useconds_t time) {
            if (time != 500000) removal.GoAsFarAsPossible();
        };
        obexProxy.MenuThread();
        removal.Join();
        remove_substitute = nullptr;  // the bus removes its directory
    };
    const std::string output = OutputOf(run, "q\n");
    EXPECT_NE(output.find(Lines({"file deleted"}) + Prompt()), output.npos) << output;
}

TEST(StartHandshakeTest, EndsWhenTheMenuThreadHasRunAlready) {
    const std::string output = OutputOf([] {
        std::thread([] { obexProxy.MenuThread(); }).join();
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        obexProxy.AwaitMenuThread(start_lock);
        Say(obexProxy.IsRunning() ? "running" : "stopped");
    });
    EXPECT_EQ(output, Banner() + Prompt() + Lines({"stopped"}));
}

// Else its signal could fall between the main thread's look and its wait.
TEST(StartHandshakeTest, TheMenuThreadWaitsForTheMainThreadToWait) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        Rival menu_thread([] { obexProxy.MenuThread(); });
        sleep_substitute = [](useconds_t /*time*/) { Say("pause"); };
        menu_thread.GoAsFarAsPossible();
        Say("not yet waiting");
        obexProxy.AwaitMenuThread(start_lock);
    });
    const std::string pause = Lines({"pause"});
    EXPECT_EQ(output, Lines({"not yet waiting"}) + pause + Banner() + pause + Prompt());
}

TEST(StartHandshakeTest, WaitsForTheMenuThread) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        Say(obexProxy.IsRunning() ? "running" : "not yet");
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        obexProxy.AwaitMenuThread(start_lock);
        Say(obexProxy.IsRunning() ? "running" : "not yet");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"not yet", "running"}) + Banner() + Prompt());
}

// For ThreadSanitizer: it reports a data race here if a lock is missing.
TEST(StopThreadsTest, MayComeWhileTheMainLoopIsMade) {
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

// After the first Ctrl-C the next has its usual meaning.
TEST(TerminationHandlerTest, StopsTheMenusAndRemovesItself) {
    const std::string output = OutputOf([] {
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        while (!obexProxy.IsRunning()) std::this_thread::yield();
        Say(morvane::terminationHandler(nullptr) == G_SOURCE_REMOVE ? "removed" : "stays");
        Say(obexProxy.IsRunning() ? "running" : "stopped");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"removed", "stopped"}) + Banner());
}

}  // namespace
}  // namespace morvane_test
