#pragma once

#include "play/session_file.h"

#include <string>
#include <vector>

namespace play {

/// Runs the command on a pseudo-terminal, types each line of standard input when a prompt is
/// displayed, and Ctrl-D at the end of the input. Copies what is displayed to standard output, with
/// the line ends that the program writes. Returns how the command ended. Throws CannotRun,
/// Interrupted, std::runtime_error or std::system_error.
Ending TypeInput(const std::vector<std::string>& command);

}  // namespace play
