#pragma once

#include "simulator/program/command_line.h"

#include <string>

namespace simulator {

/// Executes the commands of `--tell` in a running simulator until one fails, and prints the
/// answers. Throws `std::runtime_error` if no simulator can be reached, if the choice is ambiguous,
/// or if a command fails.
void TellRunning(const CommandLine& line);

/// Prints the running simulators, one a line.
void ListRunning();

}  // namespace simulator
