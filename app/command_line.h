#pragma once

#include <cstddef>
#include <string>

namespace morvane {

/// The longest bus name instance that the command line takes, in bytes.
inline constexpr std::size_t kMaxInstanceLength = 260;

/// Reads `-bus[:<instance>]`, the only switch; the last one counts. `instance` is left unchanged
/// unless a switch names one. On an invalid argument prints the error and the usage on standard
/// output and returns false.
[[nodiscard]] bool ParseCommandLine(int argc, const char* const* argv, std::string& instance);

}  // namespace morvane
