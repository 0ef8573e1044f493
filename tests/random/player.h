#pragma once

#include "random/plan.h"
#include "simulator/faults/recorder.h"
#include "support/child_process.h"
#include "support/private_bus.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace morvane_test {

/// A session that the tool knows to be disconnected: no call from number `from` up to, but not
/// including, number `to` may use it.
struct LostSession {
    std::string path;
    std::size_t from;
    std::size_t to;
};

/// The result of playing a plan.
struct PlayResult {
    std::optional<Ending> ending;  ///< nullopt if the tool had to be killed
    std::string output;
    std::string errors;
    std::vector<simulator::Call> calls;
    std::vector<std::string> files;    ///< left in the directory of the tool and the daemon
    std::vector<std::string> orphans;  ///< ids of remaining child processes
    std::vector<LostSession> lost_sessions;
    std::string stuck;                     ///< the step after which no prompt appeared
    std::string not_redrawn;               ///< the step after which a prompt was not redrawn
    std::optional<std::size_t> control_c;  ///< size of the output when Ctrl-C was first typed
    unsigned interrupts = 0;
    bool hung_up = false;
    bool bus_died = false;
    bool daemon_left = false;
    std::string report;  ///< for failure reports
};

/// Plays the plan against the tool, or `program` if it is not empty, on a bus without other users.
PlayResult Play(const Plan& plan, PrivateBus& bus, const std::string& program);

}  // namespace morvane_test
