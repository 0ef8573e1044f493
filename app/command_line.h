#pragma once

#include <cstddef>
#include <string>

namespace morvane {

/// The longest bus name instance that the command line takes, in bytes.
inline constexpr std::size_t kMaxInstanceLength = 260;

/// Reads `-bus[:<instance>]`, the only switch. False after saying on standard output what is
/// wrong and how the program is used. `instance` stays as it was unless a switch sets it; the last
/// one that does decides.
[[nodiscard]] bool ParseCommandLine(int argc, const char* const* argv, std::string& instance);

}  // namespace morvane
