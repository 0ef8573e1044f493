#pragma once

#include <string>
#include <vector>

#include "interfaces/glib_ptr.h"

namespace morvane_test {

/// The tool of this build, or the one that the environment variable MORVANE_TEST_BINARY names.
std::string ToolPath();
bool IsOtherTool();

/// The same for the simulator as a program: MORVANE_TEST_SIMULATOR.
std::string SimulatorPath();

/// morvane-play: MORVANE_TEST_PLAY.
std::string PlayPath();

/// The words that go before the tool, such as "valgrind -q": MORVANE_TEST_LAUNCHER. May be empty.
std::string Launcher();

/// Parses the options of a test program. `entries` end with an empty one. Prints what is wrong and
/// ends the process with status 2 if there is an error.
void ParseOptions(int argc, char** argv, const char* summary,
                  const std::vector<GOptionEntry>& entries);

}  // namespace morvane_test
