#include "support/programs.h"

#include <cstdlib>

namespace morvane_test {
namespace {

constexpr char kTool[] = "MORVANE_TEST_BINARY";
constexpr char kSimulator[] = "MORVANE_TEST_SIMULATOR";

std::string Named(const char* variable, const char* built) {
    const char* const path = std::getenv(variable);
    return path ? path : built;
}

}  // namespace

std::string ToolPath() {
    return Named(kTool, MORVANE_BINARY);
}

bool IsOtherTool() {
    return std::getenv(kTool) != nullptr;
}

std::string SimulatorPath() {
    return Named(kSimulator, MORVANE_SIMULATOR_BINARY);
}

}  // namespace morvane_test
