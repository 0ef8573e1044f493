#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace morvane_test {

/// Whether a thread of this process sleeps in a system call.
bool IsAsleep(pid_t thread);
/// Waits until it sleeps. Returns false if it is still running after `Patience()`.
bool AwaitSleep(pid_t thread);

/// Runs one action on a second thread. Detects a missing lock deterministically: the action
/// completes in `RunUntilBlocked` instead of blocking.
class CompetingThread {
  public:
    explicit CompetingThread(std::function<void()> act) : action_(std::move(act)) {}
    ~CompetingThread() { Join(); }

    /// Starts the thread; returns when the action is done or the thread sleeps, usually on a lock.
    void RunUntilBlocked();
    void Join();

  private:
    std::function<void()> action_;
    std::atomic<pid_t> id_{0};
    std::atomic<bool> is_done_{false};
    std::thread thread_;
};

// Make data races likely: of two threads on one processor, the one with low priority is preempted
// at any instruction as soon as the other can run. Only for processes that end soon, such as those
// of `Capture`.

/// Applies to the calling thread and the threads that it creates.
inline void PinToOneProcessor() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &processors);
    sched_setaffinity(0, sizeof processors, &processors);
}

/// Applies to the calling thread, which still progresses on a busy machine.
inline void LowerPriority() {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 5);
}

}  // namespace morvane_test
