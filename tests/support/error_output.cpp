#include "support/error_output.h"

#include <algorithm>
#include <sstream>

namespace morvane_test {
namespace {

// An emulator that runs the tool reports the end by a signal in its own name.
const std::string kEmulatorPrefix = "qemu: uncaught target signal";

}  // namespace

void ErrorOutputRules::Allow(const std::string& pattern) {
    patterns_.emplace_back(pattern);
}

void ErrorOutputRules::AllowText(const std::string& text) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty()) texts_.push_back(line);
}

bool ErrorOutputRules::IsAllowed(const std::string& line) const {
    const auto matches = [&](const std::regex& pattern) {
        return std::regex_search(line, pattern);
    };
    const auto occurs = [&](const std::string& text) { return line.find(text) != line.npos; };
    return line.empty() || line.compare(0, kEmulatorPrefix.size(), kEmulatorPrefix) == 0 ||
           std::any_of(patterns_.begin(), patterns_.end(), matches) ||
           std::any_of(texts_.begin(), texts_.end(), occurs);
}

std::vector<std::string> ErrorOutputRules::Undeclared(const std::string& output) const {
    std::istringstream stream(output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        if (!IsAllowed(line)) lines.push_back(line);
    return lines;
}

}  // namespace morvane_test
