#include "app/removal_turns.h"

namespace morvane {

RemovalTurns::Removal::Removal(RemovalTurns& turns, std::mutex& registry_mutex)
    : turns_(turns), registry_lock_(registry_mutex, std::defer_lock) {
    ++turns_.removals_.Lock()->begun;
    registry_lock_.lock();
}

RemovalTurns::Removal::~Removal() {
    registry_lock_.unlock();
    const auto removals = turns_.removals_.Lock();
    ++removals->ended;
    turns_.passed_.notify_all();
}

void RemovalTurns::LetPass() {
    auto removals = removals_.Lock();
    const std::uint64_t waiting = removals->begun;
    removals.Await(passed_, [&] { return removals->ended >= waiting; });
}

}  // namespace morvane
