// Compares the tool with general-purpose programs and prints tables in Markdown.
//
// Usage: morvane-benchmarks [--rounds N] [--only TEXT] [--figures FILE]
//   --rounds  how often everything is measured; the medians are printed (default 5)
//   --only    only benchmarks with this text in their title
//   --figures writes the figures of docs/performance.svg as comma-separated values
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

// Indexed by size, then by program: one cost for each round.
using Costs = std::map<unsigned, std::vector<std::vector<Cost>>>;

double Median(const std::vector<Cost>& costs, const Quantity& quantity) {
    std::vector<double> values;
    for (const Cost& cost : costs) values.push_back(quantity.of(cost));
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The programs run in turn, and each round starts with a different one, so that a temporary load on
// the machine affects all of them.
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

// The ratio of the costs at the largest size.
double Ratio(const Work& work, const Costs& costs, const std::string& baseline,
             const Quantity& quantity) {
    const auto found =
        std::find_if(work.subjects.begin(), work.subjects.end(),
                     [&](const Subject& subject) { return subject.name == baseline; });
    const auto index = static_cast<std::size_t>(found - work.subjects.begin());
    const auto& of_size = costs.rbegin()->second;
    return Median(of_size[0], quantity) / Median(of_size[index], quantity);
}

// Null if there is no limit.
const Target* FindTarget(const Work& work, const std::string& baseline, const Quantity& quantity) {
    const auto found =
        std::find_if(work.targets.begin(), work.targets.end(), [&](const Target& target) {
            return target.baseline == baseline && &target.quantity == &quantity;
        });
    return found == work.targets.end() ? nullptr : &*found;
}

// One row for a ratio to another program.
void WriteRatio(const Work& work, const Costs& costs, const Subject& baseline,
                const Quantity& quantity, std::FILE* file) {
    const Target* const target = FindTarget(work, baseline.name, quantity);
    std::fprintf(file, "\"%s\",\"%s\",\"%s\",%.2f,", work.title.c_str(), quantity.name,
                 baseline.name.c_str(), Ratio(work, costs, baseline.name, quantity));
    if (target != nullptr) std::fprintf(file, "%g", target->limit);
    std::fprintf(file, ",,,\n");
}

// One row for the tool's cost of a unit at the sizes.
void WriteGrowth(const Work& work, const Costs& costs, const Quantity& quantity, std::FILE* file) {
    std::vector<double> each;
    for (const auto& [size, of_size] : costs) each.push_back(Median(of_size[0], quantity) / size);
    const auto [lowest, highest] = std::minmax_element(each.begin(), each.end());
    std::fprintf(file, "\"%s\",\"%s\",,,,\"%s\",%.2g,%.2g\n", work.title.c_str(), quantity.name,
                 work.unit.c_str(), *lowest, *highest);
}

// Ratios of the quantity that is printed first, and of those with a limit.
void WriteFigures(const Work& work, const Costs& costs, std::FILE* file) {
    for (const Quantity* const quantity : work.shown) {
        bool is_written = false;
        for (const Subject& baseline : work.subjects) {
            if (&baseline == &work.subjects[0]) continue;
            if (quantity != work.shown[0] && FindTarget(work, baseline.name, *quantity) == nullptr)
                continue;
            WriteRatio(work, costs, baseline, *quantity, file);
            is_written = true;
        }
        if (is_written && costs.size() > 1) WriteGrowth(work, costs, *quantity, file);
    }
    std::fflush(file);
}

bool Judge(const Work& work, const Costs& costs) {
    const unsigned size = costs.rbegin()->first;
    bool reached = true;
    for (const Target& target : work.targets) {
        const double ratio = Ratio(work, costs, target.baseline, target.quantity);
        std::printf("\n- %s at %u: %.3f times that of %s, to be at most %.2f: %s",
                    target.quantity.name, size, ratio, target.baseline.c_str(), target.limit,
                    ratio <= target.limit ? "reached" : "**missed**");
        reached = reached && ratio <= target.limit;
    }
    std::printf("\n");
    return reached;
}

bool Run(const Work& work, int rounds, std::FILE* figures) {
    const Costs costs = Measure(work, rounds);
    PrintHead(work);
    PrintLines(work, costs);
    if (figures != nullptr) WriteFigures(work, costs, figures);
    const bool reached = Judge(work, costs);
    std::fflush(stdout);
    return reached;
}

// Runs in its own process, because fork() is slow in a large process.
bool RunApart(const Work& work, int rounds, std::FILE* figures) {
    const pid_t child = fork();
    if (child == 0) std::_Exit(Run(work, rounds, figures) ? 0 : 1);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0) throw std::runtime_error("no new process");
    if (!WIFEXITED(status)) throw std::runtime_error(work.title + " was ended");
    return WEXITSTATUS(status) == 0;
}

struct Options {
    int rounds = 5;
    morvane::TextPtr only;
    morvane::TextPtr figures;
};

Options Parse(int argc, char** argv) {
    Options options;
    gchar* only = nullptr;
    gchar* figures = nullptr;
    const GOptionEntry entries[] = {
        {"rounds", 0, 0, G_OPTION_ARG_INT, &options.rounds, "How often all is measured", "N"},
        {"only", 0, 0, G_OPTION_ARG_STRING, &only, "Works whose title contains this", "TEXT"},
        {"figures", 0, 0, G_OPTION_ARG_FILENAME, &figures, "Also write the figures", "FILE"},
        {},
    };
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
        g_option_context_new(nullptr), g_option_context_free);
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    morvane::ErrorPtr error;
    const bool good = g_option_context_parse(context.get(), &argc, &argv, morvane::Out(error));
    options.only.reset(only);
    options.figures.reset(figures);
    if (!good || options.rounds < 1) {
        throw std::runtime_error(error ? error->message : "--rounds must be positive");
    }
    return options;
}

using FilePtr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Writes the header line too. Null without a file name.
FilePtr OpenFigures(const char* name) {
    FilePtr file(name != nullptr ? std::fopen(name, "w") : nullptr, std::fclose);
    if (!file) {
        if (name != nullptr) throw std::runtime_error(std::string("cannot write ") + name);
        return file;
    }
    std::fputs(
        "\"work\",\"quantity\",\"against\",\"ratio\",\"limit\","
        "\"unit\",\"lowest\",\"highest\"\n",
        file.get());
    std::fflush(file.get());
    return file;
}

int Main(int argc, char** argv) {
    const Options options = Parse(argc, argv);
    const FilePtr figures = OpenFigures(options.figures.get());
    bool reached = true;
    for (const Work& work : AllWorks()) {
        if (!options.only || work.title.find(options.only.get()) != std::string::npos) {
            reached = RunApart(work, options.rounds, figures.get()) && reached;
        }
    }
    if (!options.only) {
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
