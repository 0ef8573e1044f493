#pragma once

#include "simulator/phone/card.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/// What moves transfers.
enum class TransferPace {
    kByRate,  ///< queued, then active after `start_delay`, then complete, at `rate` bytes a second
    kByHand,  ///< queued until `Daemon::AdvanceTransfer` and similar members move them
};

/// What a daemon starts with. The defaults behave as real phones do; a test that fixes every byte
/// takes `Scripted()`.
struct Options {
    /// The bus name is com.veltrisonix, or com.veltrisonix.<instance> when this is not empty.
    std::string instance;

    unsigned phones = 3;     ///< at most 99
    unsigned contacts = 25;  ///< in the internal memory of each phone; at most 9999
    std::uint32_t seed = 1;  ///< equal seeds give equal contents
    /// The contacts of the first phone instead of invented people, unless empty.
    std::vector<Card> phone_book;

    TransferPace pace = TransferPace::kByRate;
    /// Bytes a second; 0 sends everything in one piece. At the default rate a person can suspend,
    /// resume or cancel the transfer of a whole phone book.
    std::uint64_t rate = 1200;
    /// How long a transfer stays queued. A client learns of progress only once it has made its
    /// proxy, so a transfer that starts at once seems never to have moved.
    std::chrono::milliseconds start_delay{150};
    /// Whether the reply to a pull gives the size. If not it is 0 there and announced when the
    /// transfer becomes active.
    bool size_in_reply = true;

    /// Files are written to this existing directory under their base name; if empty, to the path
    /// that the client names.
    std::string directory;

    /// Whether Folder, NewMissedCalls, the counters and DatabaseIdentifier are announced when a
    /// call changes them. The properties themselves change in any case.
    bool announce = true;
    /// How long after the reply they are announced. A client prints the result of its call first.
    std::chrono::milliseconds announce_delay{50};

    std::uint8_t connection_state = 5;  ///< of new sessions; 5 is connected

    /// Of several phones, the one with the highest address admits only a client that has given
    /// these to the client object.
    std::string user_id = "engineer";
    std::string password = "1234";

    /// No phones, transfers moved by hand, nothing announced unless the test does it.
    static Options Scripted() {
        Options options;
        options.phones = 0;
        options.pace = TransferPace::kByHand;
        options.announce = false;
        return options;
    }
};

}  // namespace simulator
