#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace morvane_test {

/// The number after `label` in a file of the process in /proc, such as "VmRSS:" in "status", which
/// is in KiB. Throws std::runtime_error if there is none.
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

/// How many descriptors the process has open; one more if it counts its own.
inline std::size_t CountDescriptors(pid_t process) {
    const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(process) +
                                                          "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace morvane_test
