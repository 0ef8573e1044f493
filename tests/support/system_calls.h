#pragma once

#include <cstddef>
#include <functional>

#include <sys/types.h>

namespace morvane_test {

// What the code under test asks of the system, for programs linked with `--wrap` for each of these
// functions. Without a substitute the real function is called. Set one in a process of its own
// (see `Capture`).

/// In place of write(2) to standard output. May call `RealWrite`.
extern std::function<ssize_t(const void* bytes, std::size_t count)> write_substitute;
ssize_t RealWrite(const void* bytes, std::size_t count);

/// In place of usleep(3).
extern std::function<void(useconds_t microseconds)> sleep_substitute;

}  // namespace morvane_test
