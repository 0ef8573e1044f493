#include "app/removal_turns.h"

#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"
#include "unit/simulated_bus.h"

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace morvane_test {
namespace {

using morvane::Mutex;
using morvane::RemovalTurns;

// A removal on a thread of its own, which has its turn until `End`.
class OtherRemoval {
  public:
    OtherRemoval(RemovalTurns& turns, Mutex& registry_mutex, const char* farewell)
        : thread_([this, &turns, &registry_mutex, farewell] {
              const RemovalTurns::Removal removal(turns, registry_mutex);
              begun_.set_value();
              end_.get_future().wait();
              Say(farewell);
          }) {}

    /// Returns when it waits for the registry mutex, or to be ended.
    void Begin() { thread_.GoAsFarAsPossible(); }
    void AwaitTurn() { begun_.get_future().wait(); }
    void End() { end_.set_value(); }

  private:
    std::promise<void> begun_;
    std::promise<void> end_;
    Rival thread_;
};

TEST(RemovalTurnsTest, LetPassReturnsAtOnceWithoutARemoval) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        turns.LetPass();
        Say("before");
        static_cast<void>(RemovalTurns::Removal(turns, registry_mutex));  // made and ended
        turns.LetPass();
        Say("after");
    });
    EXPECT_EQ(output, Lines({"before", "after"}));
}

TEST(RemovalTurnsTest, LetPassReturnsAfterTheRemovalThatWaits) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        OtherRemoval removal(turns, registry_mutex, "removed");
        Rival menu([&] {
            turns.LetPass();
            Say("passed");
        });
        registry_mutex.lock();
        removal.Begin();
        registry_mutex.unlock();
        menu.GoAsFarAsPossible();
        Say("waiting");
        removal.End();
    });
    EXPECT_EQ(output, Lines({"waiting", "removed", "passed"}));
}

TEST(RemovalTurnsTest, LetPassDoesNotWaitForALaterRemoval) {
    const std::string output = OutputOf([] {
        RemovalTurns turns;
        Mutex registry_mutex;
        OtherRemoval first(turns, registry_mutex, "first removed");
        OtherRemoval second(turns, registry_mutex, "second removed");
        std::promise<void> passed;
        Rival menu([&] {
            turns.LetPass();
            Say("passed");
            passed.set_value();
        });
        first.Begin();
        first.AwaitTurn();
        menu.GoAsFarAsPossible();
        second.Begin();
        first.End();
        passed.get_future().wait();
        second.End();
    });
    EXPECT_EQ(output, Lines({"first removed", "passed", "second removed"}));
}

}  // namespace
}  // namespace morvane_test
