#pragma once

#include <cstddef>
#include <functional>

#include <sys/types.h>

namespace morvane_test {

// What the code under test asks of the system. Without a substitute the real function is called.
// Set one in a process of its own (see `Capture`). Programs must be linked with `--wrap` for
// write(2) and usleep(3).

/// In place of write(2) to standard output. May call `RealWrite`.
extern std::function<ssize_t(const void* bytes, std::size_t count)> write_substitute;
ssize_t RealWrite(const void* bytes, std::size_t count);

/// In place of usleep(3).
extern std::function<void(useconds_t microseconds)> sleep_substitute;

/// In place of remove(3), which succeeds.
extern std::function<void(const char* name)> remove_substitute;

}  // namespace morvane_test
