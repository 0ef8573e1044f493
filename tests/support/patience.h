#pragma once

#include <chrono>

namespace morvane_test {

using Duration = std::chrono::milliseconds;

/// `limit`, stretched by the environment variable MORVANE_TEST_TIMEOUT_FACTOR (a number; if
/// unset, what the build was configured with) for machines, sanitizers and emulators that are slow.
Duration Stretched(Duration limit);

/// How long anything is awaited unless a test says otherwise: 10 s, stretched.
Duration Patience();

}  // namespace morvane_test
