// Settings from the environment and the command line of a test program.

#include "support/patience.h"
#include "support/programs.h"

#include <cstdlib>
#include <iostream>
#include <memory>

namespace morvane_test {
namespace {

constexpr char kTool[] = "MORVANE_TEST_BINARY";

std::string Variable(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value ? value : otherwise;
}

double TimeoutFactor() {
    const double factor = std::strtod(Variable("MORVANE_TEST_TIMEOUT_FACTOR", "").c_str(), nullptr);
    return factor > 0 ? factor : MORVANE_DEFAULT_TIMEOUT_FACTOR;
}

}  // namespace

Duration Stretched(Duration limit) {
    static const double factor = TimeoutFactor();
    return std::chrono::duration_cast<Duration>(limit * factor);
}

Duration Patience() {
    return Stretched(std::chrono::seconds(10));
}

std::string ToolPath() {
    return Variable(kTool, MORVANE_BINARY);
}

bool IsOtherTool() {
    return std::getenv(kTool) != nullptr;
}

std::string SimulatorPath() {
    return Variable("MORVANE_TEST_SIMULATOR", MORVANE_SIMULATOR_BINARY);
}

std::string PlayPath() {
    return Variable("MORVANE_TEST_PLAY", MORVANE_PLAY_BINARY);
}

std::string Launcher() {
    return Variable("MORVANE_TEST_LAUNCHER", "");
}

void ParseOptions(int argc, char** argv, const char* summary,
                  const std::vector<GOptionEntry>& entries) {
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
        g_option_context_new(summary), g_option_context_free);
    g_option_context_add_main_entries(context.get(), entries.data(), nullptr);
    morvane::ErrorPtr error;
    if (g_option_context_parse(context.get(), &argc, &argv, morvane::Out(error)) != FALSE) return;
    std::cerr << error->message << "\n";
    std::exit(2);
}

}  // namespace morvane_test
