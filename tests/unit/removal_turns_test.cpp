#include "app/removal_turns.h"

#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/competing_thread.h"
#include "unit/simulated_bus.h"

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace morvane_test {
namespace {

using morvane::Mutex;
using morvane::RemovalTurns;

// A removal on its own thread, which lasts until `End`.
class OtherRemoval {
  public:
    OtherRemoval(RemovalTurns& turns, Mutex& registry_mutex, const char* message)
        : thread_([this, &turns, &registry_mutex, message] {
              const RemovalTurns::Removal removal(turns, registry_mutex);
              begun_.set_value();
              end_.get_future().wait();
              PrintLine(message);
          }) {}

    /// Returns when the thread waits for the registry mutex or for `End`.
    void Begin() { thread_.RunUntilBlocked(); }
    void AwaitTurn() { begun_.get_future().wait(); }
    void End() { end_.set_value(); }

  private:
    std::promise<void> begun_;
    std::promise<void> end_;
    CompetingThread thread_;
};

TEST(RemovalTurnsTest, LetPassReturnsImmediatelyWithoutRemoval) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        turns.LetPass();
        PrintLine("before");
        static_cast<void>(RemovalTurns::Removal(turns, registry_mutex));  // begins and ends
        turns.LetPass();
        PrintLine("after");
    });
    EXPECT_EQ(output, Lines({"before", "after"}));
}

TEST(RemovalTurnsTest, LetPassReturnsAfterWaitingRemoval) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        OtherRemoval removal(turns, registry_mutex, "removed");
        CompetingThread menu([&] {
            turns.LetPass();
            PrintLine("passed");
        });
        registry_mutex.lock();
        removal.Begin();
        registry_mutex.unlock();
        menu.RunUntilBlocked();
        PrintLine("waiting");
        removal.End();
    });
    EXPECT_EQ(output, Lines({"waiting", "removed", "passed"}));
}

TEST(RemovalTurnsTest, LetPassDoesNotWaitForLaterRemoval) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        OtherRemoval first(turns, registry_mutex, "first removed");
        OtherRemoval second(turns, registry_mutex, "second removed");
        std::promise<void> passed;
        CompetingThread menu([&] {
            turns.LetPass();
            PrintLine("passed");
            passed.set_value();
        });
        first.Begin();
        first.AwaitTurn();
        menu.RunUntilBlocked();
        second.Begin();
        first.End();
        passed.get_future().wait();
        second.End();
    });
    EXPECT_EQ(output, Lines({"first removed", "passed", "second removed"}));
}

}  // namespace
}  // namespace morvane_test
