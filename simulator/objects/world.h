#pragma once

#include "simulator/bus/bus.h"
#include "simulator/bus/object_tree.h"
#include "simulator/objects/options.h"

#include <optional>
#include <string>

namespace simulator {

/// State shared by all objects of one daemon. Used in the daemon's thread only.
struct World {
    const Options& options;
    Bus& bus;
    PropertyFaults& property_faults;
    ObjectTree tree;

    bool transfers_stalled = false;
    bool empty_transfer_path = false;
    std::optional<std::string> pull_content;  ///< instead of the phones' contents
    unsigned next_session = 0;
    unsigned next_transfer = 0;
};

}  // namespace simulator
