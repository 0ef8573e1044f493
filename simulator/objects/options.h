#pragma once

#include "simulator/phone/card.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/// How transfers advance.
enum class TransferPace {
    kByRate,  ///< queued, then active after `start_delay`, then complete, at `rate` bytes a second
    kByHand,  ///< queued until `Daemon::AdvanceTransfer` and similar members advance them
};

/// The initial settings of a daemon. The defaults behave like real phones; tests that expect exact
/// bytes use `Scripted()`.
struct Options {
    /// The bus name is com.veltrisonix, or com.veltrisonix.<instance> when this is not empty.
    std::string instance;

    unsigned phones = 3;     ///< at most 99
    unsigned contacts = 25;  ///< in the internal memory of each phone; at most 9999
    std::uint32_t seed = 1;  ///< the contents depend only on the seed
    /// If not empty, the contacts of the first phone instead of invented ones.
    std::vector<Card> phone_book;

    TransferPace pace = TransferPace::kByRate;
    /// Bytes a second; 0 sends everything in one piece. At the default rate a person can suspend,
    /// resume or cancel the transfer of a whole phone book.
    std::uint64_t rate = 1200;
    /// How long a transfer is queued. A client is notified of progress only after it has created
    /// its proxy, so it would see no progress of a transfer that starts immediately.
    std::chrono::milliseconds start_delay{150};
    /// Whether the reply to a pull contains the size. Otherwise it contains 0, and the size is
    /// announced when the transfer becomes active.
    bool size_in_reply = true;

    /// Files are written to this existing directory under their base name; if empty, to the path
    /// that the client names.
    std::string directory;

    /// Whether Folder, NewMissedCalls, the counters and DatabaseIdentifier are announced when a
    /// call changes them. The properties themselves change in any case.
    bool announce = true;
    /// The delay of that announcement after the reply, so that a client first prints the result of
    /// its call.
    std::chrono::milliseconds announce_delay{50};

    std::uint8_t connection_state = 5;  ///< initial state of sessions; 5 is connected

    /// If there are several phones, the one with the highest address accepts only clients that have
    /// set these credentials on the client object.
    std::string user_id = "engineer";
    std::string password = "1234";

    /// No phones; transfers advance, and changes are announced, only at the test's request.
    static Options Scripted() {
        Options options;
        options.phones = 0;
        options.pace = TransferPace::kByHand;
        options.announce = false;
        return options;
    }
};

}  // namespace simulator
