#pragma once

#include "random/random_source.h"

#include <string>
#include <vector>

namespace morvane_test {

/// What the operator loses by an event.
enum class Loss { kNone, kSession, kClient };

/// Something that the daemon does by itself, or how it answers from now on.
struct DaemonEvent {
    /// A command of the simulator, with "{session}" and "{transfer}" for the newest ones, and
    /// "{phone}" for one of the phones.
    std::string command;
    Loss loss = Loss::kNone;
    bool restores_client = false;
    bool mistypes_properties = false;  ///< a property may come with a value of another type
    bool hides_address = false;        ///< a device may have no address
    bool renames_files = false;        ///< a transfer may not tell where its file is
    bool fakes_transfers = false;      ///< a pull may come to nothing although it was accepted
    bool makes_calls_hang = false;
    std::string failing_method;  ///< that will be refused or answered wrongly
};

using DaemonTrait = bool DaemonEvent::*;

/// Draws what a daemon does in one conversation. What was removed is often added again later.
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
    const struct PropertyRow* property_ = nullptr;  // that the event speaks of
};

}  // namespace morvane_test
