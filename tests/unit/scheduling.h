#pragma once

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>

namespace morvane_test {

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
