// Measures the tool against what an engineer would use without it, and prints tables in Markdown.
//
// Usage: morvane-benchmarks [--rounds N] [--only TEXT]
//   --rounds  how often everything is measured; the medians are printed (default 5)
//   --only    the works whose title holds this
// Ends with status 1 if a target is missed.

#include "work.h"

#include <gtest/gtest.h>

#include "interfaces/glib_ptr.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <numeric>

namespace morvane_benchmarks {
namespace {

// By size, then subject: one cost for each round.
using Costs = std::map<unsigned, std::vector<std::vector<Cost>>>;

double Median(const std::vector<Cost>& costs, const Quantity& quantity) {
    std::vector<double> values;
    for (const Cost& cost : costs) values.push_back(quantity.of(cost));
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Subjects take turns, and each round begins with another: what disturbs the machine for a while
// disturbs all.
Costs Measure(const Work& work, int rounds) {
    Costs costs;
    for (const unsigned size : work.sizes) {
        auto& of_size = costs[size];
        of_size.resize(work.subjects.size());
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t turn = 0; turn < work.subjects.size(); ++turn) {
                const std::size_t subject =
                    (turn + static_cast<std::size_t>(round)) % work.subjects.size();
                of_size[subject].push_back(work.subjects[subject].run(size));
            }
        }
    }
    return costs;
}

void PrintHead(const Work& work) {
    std::printf("\n### %s\n\n| %s | program |", work.title.c_str(), work.unit.c_str());
    for (const Quantity* const quantity : work.shown) {
        std::printf(" %s | each | morvane's share |", quantity->name);
    }
    std::printf("\n|--:|---|");
    for (std::size_t i = 0; i < work.shown.size(); ++i) std::printf("--:|--:|--:|");
    std::printf("\n");
}

void PrintLines(const Work& work, const Costs& costs) {
    for (const auto& [size, of_size] : costs) {
        for (std::size_t subject = 0; subject < of_size.size(); ++subject) {
            std::printf("| %u | %s |", size, work.subjects[subject].name.c_str());
            for (const Quantity* const quantity : work.shown) {
                const double tool = Median(of_size[0], *quantity);
                const double value = Median(of_size[subject], *quantity);
                if (value > 0) {
                    std::printf(" %.2f | %.4f | %.2f |", value, value / size, tool / value);
                } else {
                    std::printf(" - | - | - |");
                }
            }
            std::printf("\n");
        }
    }
}

bool Judge(const Work& work, const Costs& costs) {
    const auto& [size, of_size] = *costs.rbegin();
    bool reached = true;
    for (const Target& target : work.targets) {
        const auto rival =
            std::find_if(work.subjects.begin(), work.subjects.end(),
                         [&](const Subject& subject) { return subject.name == target.rival; });
        const auto index = static_cast<std::size_t>(rival - work.subjects.begin());
        const double ratio =
            Median(of_size[0], target.quantity) / Median(of_size[index], target.quantity);
        std::printf("\n- %s at %u: %.3f times that of %s, to be at most %.2f: %s",
                    target.quantity.name, size, ratio, target.rival.c_str(), target.limit,
                    ratio <= target.limit ? "reached" : "**missed**");
        reached = reached && ratio <= target.limit;
    }
    std::printf("\n");
    return reached;
}

bool Run(const Work& work, int rounds) {
    const Costs costs = Measure(work, rounds);
    PrintHead(work);
    PrintLines(work, costs);
    const bool reached = Judge(work, costs);
    std::fflush(stdout);
    return reached;
}

// In a process of its own, which is small when it starts others: a copy of a large one is slow.
bool RunApart(const Work& work, int rounds) {
    const pid_t child = fork();
    if (child == 0) std::_Exit(Run(work, rounds) ? 0 : 1);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0) throw std::runtime_error("no new process");
    if (!WIFEXITED(status)) throw std::runtime_error(work.title + " was ended");
    return WEXITSTATUS(status) == 0;
}

struct Wishes {
    int rounds = 5;
    morvane::TextPtr only;
};

Wishes Parse(int argc, char** argv) {
    Wishes wishes;
    gchar* only = nullptr;
    const GOptionEntry entries[] = {
        {"rounds", 0, 0, G_OPTION_ARG_INT, &wishes.rounds, "How often all is measured", "N"},
        {"only", 0, 0, G_OPTION_ARG_STRING, &only, "Works whose title holds this", "TEXT"},
        {},
    };
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
        g_option_context_new(nullptr), g_option_context_free);
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    morvane::ErrorPtr error;
    const bool good = g_option_context_parse(context.get(), &argc, &argv, morvane::Out(error));
    wishes.only.reset(only);
    if (!good || wishes.rounds < 1) {
        throw std::runtime_error(error ? error->message : "--rounds must be positive");
    }
    return wishes;
}

int Main(int argc, char** argv) {
    const Wishes wishes = Parse(argc, argv);
    bool reached = true;
    for (const Work& work : AllWorks()) {
        if (!wishes.only || work.title.find(wishes.only.get()) != std::string::npos) {
            reached = RunApart(work, wishes.rounds) && reached;
        }
    }
    if (!wishes.only) {
        std::printf("\n%s\n\n%s\n", CountedWrites().c_str(), LoadRate().c_str());
    }
    return reached ? 0 : 1;
}

}  // namespace
}  // namespace morvane_benchmarks

int main(int argc, char** argv) try {
    return morvane_benchmarks::Main(argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
}
