// Plays random conversations against the tool and checks rules that every conversation must
// satisfy.

#include "random/checker.h"
#include "random/plan.h"
#include "random/player.h"
#include "support/private_bus.h"
#include "support/programs.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace morvane_test {
namespace {

struct Settings {
    std::string program;  // path of this program
    std::string tool;
    gint64 seed = 1;
    gint64 count = 1;
    gint jobs = 8;
};

// Environment variables that affect the result, as a shell command prefix.
std::string Environment() {
    std::string settings;
    for (const char* const name :
         {"ASAN_OPTIONS", "LSAN_OPTIONS", "MORVANE_TEST_BINARY", "MORVANE_TEST_LAUNCHER"})
        if (const char* const value = std::getenv(name))
            settings += std::string(name) + "='" + value + "' ";
    return settings;
}

/// Plays the conversations in parallel; each worker has its own bus.
class Run {
  public:
    explicit Run(const Settings& settings) : settings_(settings) {}

    /// Returns the number of failed seeds.
    std::size_t Play() {
        std::vector<std::thread> workers;
        for (gint64 worker = 0; worker < std::min<gint64>(settings_.jobs, settings_.count);
             ++worker)
            workers.emplace_back([this] { Work(); });
        for (std::thread& worker : workers) worker.join();
        return failures_;
    }

  private:
    void Work() {
        std::optional<PrivateBus> bus(std::in_place);
        for (gint64 number = next_++; number < settings_.count; number = next_++) {
            const Plan plan = DrawPlan(static_cast<std::uint64_t>(settings_.seed + number));
            const PlayResult result = morvane_test::Play(plan, *bus, settings_.tool);
            const std::vector<std::string> mistakes = FindMistakes(plan, result);
            if (!mistakes.empty()) Report(plan, result, mistakes);
            if (plan.termination == Termination::kBusDies) bus.emplace();
        }
    }

    void Report(const Plan& plan, const PlayResult& result,
                const std::vector<std::string>& mistakes) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++failures_;
        std::cout << "==== Seed " << plan.seed << " failed\n";
        for (const std::string& mistake : mistakes) std::cout << mistake << "\n";
        std::cout << result.report << "---- Repeat with\n"
                  << Environment() << settings_.program << " --seed=" << plan.seed
                  << (settings_.tool.empty() ? "" : " --tool=" + settings_.tool) << std::endl;
    }

    const Settings& settings_;
    std::atomic<gint64> next_{0};
    std::mutex mutex_;
    std::size_t failures_ = 0;  // mutex_
};

Settings ParseCommandLine(int argc, char** argv) {
    Settings settings;
    gchar* tool = nullptr;
    ParseOptions(argc, argv, "- play random conversations",
                 {{"seed", 's', 0, G_OPTION_ARG_INT64, &settings.seed, "first seed", "N"},
                  {"count", 'n', 0, G_OPTION_ARG_INT64, &settings.count,
                   "number of conversations, one per seed", "N"},
                  {"jobs", 'j', 0, G_OPTION_ARG_INT, &settings.jobs,
                   "number of parallel conversations", "N"},
                  {"tool", 't', 0, G_OPTION_ARG_FILENAME, &tool,
                   "tool to test (default: of this build)", "FILE"},
                  {}});
    const morvane::TextPtr owned_tool(tool);
    settings.program = argv[0];
    // Each conversation has its own working directory.
    if (tool) settings.tool = std::filesystem::absolute(tool);
    return settings;
}

}  // namespace
}  // namespace morvane_test

int main(int argc, char** argv) {
    const morvane_test::Settings settings = morvane_test::ParseCommandLine(argc, argv);
    const std::size_t failures = morvane_test::Run(settings).Play();
    std::cout << failures << " of " << settings.count << " seeds failed\n";
    return failures == 0 ? 0 : 1;
}
