#pragma once

#include <gio/gio.h>

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace morvane_test {

/// What a process holds.
struct Footprint {
    std::size_t resident_kib;      ///< of memory, shared pages included
    std::size_t proportional_kib;  ///< of memory, its share of shared pages
    std::size_t descriptors;
    std::size_t match_rules;  ///< with the bus

    std::string Describe() const;
};

/// Of a running process, which is connected to the bus under this unique name. Throws
/// std::runtime_error if the kernel or the bus does not tell.
Footprint MeasureFootprint(pid_t process, GDBusConnection* bus, const std::string& unique_name);

}  // namespace morvane_test
