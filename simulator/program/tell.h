#pragma once

#include "simulator/program/command_line.h"

#include <string>

namespace simulator {

/// Carries out the commands of `--tell` in a running simulator, until one fails; prints the
/// answers. Throws `std::runtime_error` if none can be reached, several could be meant, or a
/// command fails.
void TellRunning(const CommandLine& line);

/// Prints the running simulators, one a line.
void ListRunning();

}  // namespace simulator
