#include "app/obex_proxy.h"

#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"
#include "unit/simulated_bus.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>

namespace morvane_test {
namespace {

using morvane::obexProxy;

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

// What this finds is a race; ThreadSanitizer tells.
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
