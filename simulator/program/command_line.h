#pragma once

#include "simulator/objects/options.h"

#include <string>
#include <vector>

namespace simulator {

/// The parsed command line.
struct CommandLine {
    Options options;
    std::string help;  ///< unless empty, printed instead of serving
    bool show_version = false;
    std::string phone_book;             ///< the file with the contacts of the first phone, or empty
    std::vector<std::string> commands;  ///< executed at the start
    std::vector<std::string> told;      ///< commands for a running simulator, instead of serving
    std::string simulator;              ///< process id of that simulator; empty: the only one
    bool list = false;                  ///< list running simulators, instead of serving
    std::vector<std::string> program;   ///< command to run on a private bus
};

/// Parses the arguments, the program's name first. Throws `std::runtime_error` with one line for
/// invalid ones.
CommandLine ParseCommandLine(const std::vector<std::string>& words);

}  // namespace simulator
