#pragma once

#include <cstddef>
#include <functional>

#include <sys/types.h>

namespace morvane_test {

// Substitutes for system functions. If one is empty the real function is called. Set them only in
// child processes (see `Capture`). The program must be linked with `--wrap` for write(2) and
// usleep(3).

/// Replaces write(2) to standard output. May call `RealWrite`.
extern std::function<ssize_t(const void* bytes, std::size_t count)> write_substitute;
ssize_t RealWrite(const void* bytes, std::size_t count);

/// Replaces usleep(3).
extern std::function<void(useconds_t microseconds)> sleep_substitute;

/// Replaces remove(3); the result is success.
extern std::function<void(const char* name)> remove_substitute;

}  // namespace morvane_test
