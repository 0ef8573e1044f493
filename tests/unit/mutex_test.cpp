#include "console/mutex.h"

#include <gtest/gtest.h>

#include <mutex>

namespace morvane {
namespace {

TEST(MutexTest, AssertHeldAbortsInDebugBuilds) {
    Mutex mutex;
    std::mutex other;
    std::unique_lock<std::mutex> lock(mutex.Unchecked());
    mutex.AssertHeld(lock);
    lock.unlock();
    EXPECT_DEBUG_DEATH(mutex.AssertHeld(lock), "owns_lock");
    const std::unique_lock<std::mutex> lock_of_other(other);
    EXPECT_DEBUG_DEATH(mutex.AssertHeld(lock_of_other), "mutex");
}

}  // namespace
}  // namespace morvane
