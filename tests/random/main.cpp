// Plays conversations that dice have drawn against the tool, and checks what holds in any
// conversation.

#include "interfaces/glib_ptr.h"
#include "random/plan.h"
#include "random/player.h"
#include "random/verdict.h"
#include "support/private_bus.h"

#include <glib.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace morvane_test {
namespace {

struct Settings {
    gint64 seed = 1;
    gint64 count = 1;
    gint jobs = 8;
    gboolean only_plan = FALSE;
    gboolean tell_all = FALSE;
    std::string tool;
    std::string program;  // this one
};

using Counts = std::map<std::string, std::size_t>;

void Print(const char* title, const Counts& counts) {
    std::cout << title << ":\n";
    for (const auto& [name, count] : counts)
        std::cout << "  " << std::setw(8) << count << "  " << name << "\n";
}

// What a sanitizer's findings depend on, as it is written before a command.
std::string Environment() {
    std::string settings;
    for (const char* const name :
         {"ASAN_OPTIONS", "LSAN_OPTIONS", "MORVANE_TEST_BINARY", "MORVANE_TEST_LAUNCHER"})
        if (const char* const value = std::getenv(name))
            settings += std::string(name) + "='" + value + "' ";
    return settings;
}

/// What was played in all.
class Tally {
  public:
    void Add(const Played& played, const OutputReading& output) {
        ++conversations_;
        lines_ += played.lines;
        for (const auto& [name, count] : played.events) events_[name] += count;
        for (const simulator::Call& call : played.calls) ++calls_[call.method];
        for (const OutputReading::Prompt& prompt : output.prompts)
            ++prompts_["Vantor" + prompt.segment + (prompt.asks_value ? " ?" : " >")];
        ++endings_[played.ending ? played.ending->Describe() : "killed"];
    }

    void Report() const {
        Print("Prompts reached", prompts_);
        Print("Calls received", calls_);
        Print("Events of the daemon", events_);
        Print("Endings", endings_);
        std::cout << conversations_ << " conversations, " << lines_ << " lines, " << Sum(calls_)
                  << " calls, " << Sum(events_) << " events, " << Sum(prompts_) << " prompts\n";
    }

  private:
    static std::size_t Sum(const Counts& counts) {
        std::size_t sum = 0;
        for (const auto& entry : counts) sum += entry.second;
        return sum;
    }

    std::size_t conversations_ = 0;
    std::size_t lines_ = 0;
    Counts events_;
    Counts calls_;
    Counts prompts_;
    Counts endings_;
};

/// Plays the conversations, several at a time; each worker has a bus of its own.
class Run {
  public:
    explicit Run(const Settings& settings) : settings_(settings) {}

    /// How many seeds have failed.
    std::size_t Play() {
        std::vector<std::thread> workers;
        for (gint64 worker = 0; worker < std::min<gint64>(settings_.jobs, settings_.count);
             ++worker)
            workers.emplace_back([this] { Work(); });
        for (std::thread& worker : workers) worker.join();
        tally_.Report();
        return failures_;
    }

  private:
    void Work() {
        auto bus = std::make_unique<PrivateBus>();
        for (gint64 number = next_++; number < settings_.count; number = next_++) {
            const Plan plan = DrawPlan(static_cast<std::uint64_t>(settings_.seed + number));
            Judge(plan, morvane_test::Play(plan, *bus, settings_.tool));
            if (plan.farewell == Farewell::kBusDies) bus = std::make_unique<PrivateBus>();
        }
    }

    void Judge(const Plan& plan, const Played& played) {
        // Whoever was ended by a signal, or put off, may have been about to write.
        const bool cut = !played.ending || played.ending->signal || played.hung_up;
        const OutputReading output = ReadOutput(played.output, cut, played.control_c);
        const std::vector<std::string> mistakes = FindMistakes(plan, played, output);
        const std::lock_guard<std::mutex> lock(mutex_);
        tally_.Add(played, output);
        if (!mistakes.empty()) {
            ++failures_;
            Tell(plan, played, mistakes);
        } else if (settings_.tell_all != FALSE) {
            std::cout << played.story;
        }
    }

    void Tell(const Plan& plan, const Played& played,
              const std::vector<std::string>& mistakes) const {
        std::cout << "==== Seed " << plan.seed << " failed\n";
        for (const std::string& mistake : mistakes) std::cout << mistake << "\n";
        std::cout << played.story << "---- Repeat with\n"
                  << Environment() << settings_.program << " --seed=" << plan.seed
                  << (settings_.tool.empty() ? "" : " --tool=" + settings_.tool) << std::endl;
    }

    const Settings& settings_;
    std::atomic<gint64> next_{0};
    std::mutex mutex_;
    Tally tally_;               // mutex_
    std::size_t failures_ = 0;  // mutex_
};

Settings ParseCommandLine(int argc, char** argv) {
    Settings settings;
    settings.program = argv[0];
    gchar* tool = nullptr;
    const GOptionEntry entries[] = {
        {"seed", 's', 0, G_OPTION_ARG_INT64, &settings.seed, "of the first conversation", "N"},
        {"count", 'n', 0, G_OPTION_ARG_INT64, &settings.count, "conversations, one seed each", "N"},
        {"jobs", 'j', 0, G_OPTION_ARG_INT64, &settings.jobs, "conversations at a time", "N"},
        {"tool", 't', 0, G_OPTION_ARG_FILENAME, &tool, "instead of the one built here", "FILE"},
        {"story", 0, 0, G_OPTION_ARG_NONE, &settings.tell_all, "also when all is well", {}},
        {"plan", 'p', 0, G_OPTION_ARG_NONE, &settings.only_plan, "show what would be played", {}},
        {}};
    GOptionContext* const context = g_option_context_new("- play random conversations");
    g_option_context_add_main_entries(context, entries, nullptr);
    morvane::ErrorPtr error;
    g_option_context_parse(context, &argc, &argv, morvane::Out(error));
    g_option_context_free(context);
    const morvane::TextPtr owned_tool(tool);
    if (error) {
        std::cerr << error->message << "\n";
        std::exit(2);
    }
    // Each conversation has a working folder of its own.
    if (tool) settings.tool = std::filesystem::absolute(tool);
    return settings;
}

int Main(const Settings& settings) {
    if (settings.only_plan) {
        std::cout << Describe(DrawPlan(static_cast<std::uint64_t>(settings.seed)));
        return 0;
    }
    const std::size_t failures = Run(settings).Play();
    std::cout << failures << " seeds failed\n";
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace morvane_test

int main(int argc, char** argv) {
    return morvane_test::Main(morvane_test::ParseCommandLine(argc, argv));
}
