#pragma once

#include <string>
#include <vector>

namespace play {

/// Runs the command in this process's terminal until it ends, and writes the session into a new
/// file. The arguments are written into it if the program is called morvane. Throws CannotRun,
/// Interrupted or std::system_error. If the program cannot be started, no file is left; otherwise
/// the session so far is written first.
void Record(const std::string& file, const std::vector<std::string>& command);

}  // namespace play
