#pragma once

#include <chrono>

namespace morvane_test {

using Duration = std::chrono::milliseconds;

/// `limit`, multiplied by the environment variable MORVANE_TEST_TIMEOUT_FACTOR (default: the CMake
/// variable of that name), for slow machines, sanitizers and emulators.
Duration Stretched(Duration limit);

/// Default time-out of all waits: Stretched(10 s).
Duration Patience();

}  // namespace morvane_test
