#pragma once

#include <string>

namespace morvane_test {

/// The tool of this build, or the one that the environment variable MORVANE_TEST_BINARY names.
std::string ToolPath();
bool IsOtherTool();

/// The same for the simulator as a program: MORVANE_TEST_SIMULATOR.
std::string SimulatorPath();

}  // namespace morvane_test
