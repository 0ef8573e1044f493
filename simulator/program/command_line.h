#pragma once

#include "simulator/objects/options.h"

#include <string>
#include <vector>

namespace simulator {

/// The parsed command line.
struct CommandLine {
    Options options;
    std::string help;  ///< to be printed instead of serving, unless empty
    bool show_version = false;
    std::string phone_book;             ///< the file with the contacts of the first phone, or empty
    std::vector<std::string> commands;  ///< to execute at the start
    std::vector<std::string> told;      ///< commands for a running simulator, instead of serving
    std::string simulator;              ///< its process id; empty: the only one
    bool list = false;                  ///< list the running ones instead
    std::vector<std::string> program;   ///< to run on a private bus, with its arguments
};

/// Parses the arguments, the program's name first. Throws `std::runtime_error` with one line for
/// invalid ones.
CommandLine ParseCommandLine(const std::vector<std::string>& words);

}  // namespace simulator
