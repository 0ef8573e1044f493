#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace morvane_test {

/// Reads the number after `label` from a file in /proc/PID, such as "VmRSS:" in "status" (KiB).
/// Throws std::runtime_error if it is missing.
inline std::size_t ReadProcessNumber(pid_t process, const std::string& file,
                                     const std::string& label) {
    const std::string path = "/proc/" + std::to_string(process) + "/" + file;
    std::ifstream stream(path);
    for (std::string word; stream >> word;) {
        std::size_t number = 0;
        if (word == label && stream >> number) return number;
    }
    throw std::runtime_error("no " + label + " in " + path);
}

/// Number of open descriptors of the process. For the calling process it includes the one used
/// here.
inline std::size_t CountDescriptors(pid_t process) {
    const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(process) +
                                                          "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace morvane_test
