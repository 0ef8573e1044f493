#pragma once

#include <cstddef>
#include <string>

#include <sys/types.h>

namespace morvane_test {

/// The number that stands behind `label` in a file that the kernel keeps of a process, such as
/// "VmRSS:" in "status", which is in KiB. Throws std::runtime_error if there is none.
std::size_t ReadProcessNumber(pid_t process, const std::string& file, const std::string& label);

/// How many descriptors the process has open; one more if it asks for itself.
std::size_t CountDescriptors(pid_t process);

}  // namespace morvane_test
