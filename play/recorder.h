#pragma once

#include <string>
#include <vector>

namespace play {

/// Runs the command in this process's terminal until it ends, and writes the session into a new
/// file. The arguments are written into it if the program is called morvane. Throws CannotRun,
/// Interrupted once the session so far is written, or std::system_error.
void Record(const std::string& file, const std::vector<std::string>& command);

}  // namespace play
