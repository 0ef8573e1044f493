#include "app/command_line.h"

#include <cstdio>
#include <cstring>

namespace morvane {
namespace {

bool Refuse() {
    std::printf("Usage: morvane <options>, where <options> are:\n");
    std::printf("\t-bus[:<instance>]  - DBus bus name instance.\n");
    return false;
}

// "-bus" followed by anything but a colon is the bare switch: scripts in the field rely on it.
bool ParseBusSwitch(const char* argument, std::string& instance) {
    if (std::strncmp(argument + 2, "us", 2) != 0) {
        return Refuse();
    }
    if (argument[4] != ':') {
        return true;
    }
    const char* const text = argument + 5;
    const std::size_t length = std::strcspn(text, " \t");
    if (length > kMaxInstanceLength) {
        return Refuse();
    }
    instance.assign(text, length);
    return true;
}

bool ParseArgument(const char* argument, std::string& instance) {
    if (argument[0] != '-') {
        std::printf("Unrecognized command line option %s\n", argument);
        return Refuse();
    }
    if (argument[1] != 'b') {
        std::printf("Unrecognized command line switch '%c'\n", argument[1]);
        return Refuse();
    }
    return ParseBusSwitch(argument, instance);
}

}  // namespace

bool ParseCommandLine(int argc, const char* const* argv, std::string& instance) {
    for (int i = 1; i < argc; ++i) {
        if (!ParseArgument(argv[i], instance)) {
            return false;
        }
    }
    return true;
}

}  // namespace morvane
