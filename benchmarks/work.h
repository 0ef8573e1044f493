#pragma once

#include "scene.h"

#include <functional>
#include <string>
#include <vector>

namespace morvane_benchmarks {

/// The kind of cost that a limit applies to.
struct Quantity {
    const char* name;
    double (*of)(const Cost& cost);  ///< milliseconds, or KiB
};

extern const Quantity kCpu;
extern const Quantity kWall;
extern const Quantity kMemory;

/// One program that executes the task at one size.
struct Subject {
    std::string name;
    std::function<Cost(unsigned size)> run;
};

/// The tool's cost must be at most `limit` times that of `baseline`.
struct Target {
    std::string baseline;
    const Quantity& quantity;
    double limit;
};

/// The same task for several programs, the tool first.
struct Work {
    std::string title;
    std::string unit;             ///< unit of `sizes`
    std::vector<unsigned> sizes;  ///< targets apply at the last one
    std::vector<Subject> subjects;
    std::vector<Target> targets;
    std::vector<const Quantity*> shown;
};

std::vector<Work> AllWorks();

/// System calls that the tool makes to show a file of 8 MiB, counted, not timed. One line.
std::string CountedWrites();
/// The rate of the notifications, without and with a listener. One line.
std::string LoadRate();

}  // namespace morvane_benchmarks
