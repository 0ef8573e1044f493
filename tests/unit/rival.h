#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace morvane_test {

/// Whether a thread of this process waits for something.
bool IsAsleep(pid_t thread);
/// Waits until it does. Returns false if it still runs after `Patience()`.
bool AwaitSleep(pid_t thread);

/// A second thread beside the test's own, which does one thing. Shows a missing lock every time: if
/// `GoAsFarAsPossible` finds what is to be done done, nothing has held it up.
class Rival {
  public:
    explicit Rival(std::function<void()> act) : act_(std::move(act)) {}
    Rival(const Rival&) = delete;
    Rival& operator=(const Rival&) = delete;
    ~Rival() { Join(); }

    /// Starts; returns when all is done, or when the thread sleeps: waits for a lock, mostly.
    void GoAsFarAsPossible();
    void Join();

  private:
    std::function<void()> act_;
    std::atomic<pid_t> id_{0};
    std::atomic<bool> is_done_{false};
    std::thread thread_;
};

// Two threads on one processor, one of them behind the other: the one behind gives way as soon as
// the other can run, at whatever instruction. Races show up that way which otherwise need luck.
// Only for processes that end soon, such as `Capture` makes.

/// Holds for the calling thread and those that it starts.
inline void StayOnOneProcessor() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &processors);
    sched_setaffinity(0, sizeof processors, &processors);
}

/// Holds for the calling thread.
inline void StayBehindOtherThreads() {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19);
}

}  // namespace morvane_test
