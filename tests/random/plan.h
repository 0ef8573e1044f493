#pragma once

#include "random/daemon_events.h"
#include "simulator/objects/options.h"
#include "support/terminal.h"

#include <cstdint>
#include <string>
#include <vector>

namespace morvane_test {

/// A step of a conversation.
struct Step {
    enum class Kind {
        kType,       ///< the operator types `bytes`
        kCommand,    ///< the daemon executes `event`
        kContent,    ///< the daemon's next pulls download `bytes`
        kInterrupt,  ///< SIGINT to the tool
        kControlC,   ///< Ctrl-C on the terminal
    };
    Kind kind;
    std::string bytes;
    DaemonEvent event;
    /// Wait until the tool has processed this step.
    bool awaited = true;
};

/// How a conversation ends.
enum class Termination { kEndOfInput, kUnterminatedLine, kQuit, kHangUp, kBusDies };

/// A complete conversation, generated before it is played.
struct Plan {
    std::uint64_t seed;
    Wiring wiring;
    simulator::Options daemon;
    bool waits_for_first_prompt;
    std::vector<Step> steps;
    Termination termination;
    std::string last_input;  ///< for kUnterminatedLine and kQuit

    bool Has(DaemonTrait trait) const;
};

/// The plan depends on the seed only.
Plan DrawPlan(std::uint64_t seed);

/// One line, without the steps.
std::string Describe(const Plan& plan);
std::string Describe(const Step& step);

}  // namespace morvane_test
