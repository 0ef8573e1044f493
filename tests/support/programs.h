#pragma once

#include <string>
#include <vector>

#include "interfaces/glib_ptr.h"

namespace morvane_test {

/// Path of the tool: MORVANE_TEST_BINARY from the environment, else the tool of this build.
std::string ToolPath();
bool IsOtherTool();

/// Path of the simulator program: MORVANE_TEST_SIMULATOR or that of this build.
std::string SimulatorPath();

/// Path of morvane-play: MORVANE_TEST_PLAY or that of this build.
std::string PlayPath();

/// Command prefix for the tool, such as "valgrind -q": MORVANE_TEST_LAUNCHER. May be empty.
std::string Launcher();

/// Parses the options of a test program. The last of `entries` must be empty. On an error prints it
/// and exits with status 2.
void ParseOptions(int argc, char** argv, const char* summary,
                  const std::vector<GOptionEntry>& entries);

}  // namespace morvane_test
