#include "app/removal_turns.h"

namespace morvane {

RemovalTurns::Removal::Removal(RemovalTurns& turns, std::mutex& registry_mutex)
    : turns_(turns), registry_lock_(registry_mutex, std::defer_lock) {
    {
        const Hold hold(turns_.mutex_);
        ++turns_.begun_;
    }
    registry_lock_.lock();
}

RemovalTurns::Removal::~Removal() {
    registry_lock_.unlock();
    const Hold hold(turns_.mutex_);
    ++turns_.ended_;
    turns_.passed_.notify_all();
}

void RemovalTurns::LetPass() {
    const Hold hold(mutex_);
    const std::uint64_t waiting = begun_;
    while (ended_ < waiting) {
        passed_.wait(mutex_);
    }
}

}  // namespace morvane
