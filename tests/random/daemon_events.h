#pragma once

#include "random/random_source.h"

#include <string>
#include <vector>

namespace morvane_test {

/// What the tool loses because of an event.
enum class Loss { kNone, kSession, kClient };

/// An action of the daemon, or a change of its replies.
struct DaemonEvent {
    /// A command of the simulator. "{session}" and "{transfer}" are replaced by the newest
    /// ones, "{phone}" by the first phone.
    std::string command;
    Loss loss = Loss::kNone;
    bool restores_client = false;
    bool mistypes_properties = false;  ///< a property may have another type
    bool hides_address = false;        ///< a device may have no address
    bool renames_files = false;        ///< the file of a transfer may be unknown
    bool fakes_transfers = false;      ///< an accepted pull may have no transfer
    bool makes_calls_hang = false;
    std::string failing_method;  ///< will be refused or get a wrong reply
};

using DaemonTrait = bool DaemonEvent::*;

/// Draws the daemon's events for one conversation. Most faults are reverted by a later event.
class DaemonEventGenerator {
  public:
    explicit DaemonEventGenerator(RandomSource& random) : random_(random) {}

    DaemonEvent Draw();

  private:
    DaemonEvent DrawNewEvent();
    std::string Fill(const std::string& pattern, DaemonEvent& event);
    std::string DrawPart(const std::string& part, DaemonEvent& event);
    std::string DrawProperty(DaemonEvent& event, bool anywhere);
    std::string DrawValue(DaemonEvent& event);

    RandomSource& random_;
    std::vector<DaemonEvent> recoveries_;
    const struct PropertyRow* property_ = nullptr;  // of the current event
};

}  // namespace morvane_test
