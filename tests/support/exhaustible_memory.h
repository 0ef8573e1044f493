#pragma once

#include <atomic>

namespace morvane_test {

/// Every allocation of the process by `new` fails while this is set. For programs linked with
/// exhaustible_memory.cpp, which replaces the operators: nothing else can make one allocation of
/// the tool's fail.
extern std::atomic<bool> memory_is_exhausted;

}  // namespace morvane_test
