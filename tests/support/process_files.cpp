#include "support/process_files.h"

#include <fstream>
#include <stdexcept>

namespace morvane_test {

std::size_t ReadProcessNumber(pid_t process, const std::string& file, const std::string& label) {
    const std::string path = "/proc/" + std::to_string(process) + "/" + file;
    std::ifstream stream(path);
    for (std::string word; stream >> word;) {
        std::size_t number = 0;
        if (word == label && stream >> number) return number;
    }
    throw std::runtime_error("no " + label + " in " + path);
}

}  // namespace morvane_test
