#include "app/removal_turns.h"

namespace morvane {

RemovalTurns::Removal::Removal(RemovalTurns& turns, Mutex& registry_mutex)
    : turns_(turns), registry_mutex_(registry_mutex) {
    turns_.Begin();
    registry_mutex_.lock();
}

RemovalTurns::Removal::~Removal() {
    registry_mutex_.unlock();
    turns_.End();
}

void RemovalTurns::Begin() {
    const LockGuard guard(mutex_);
    ++begun_;
}

void RemovalTurns::End() {
    const LockGuard guard(mutex_);
    ++ended_;
    passed_.notify_all();
}

void RemovalTurns::LetPass() {
    const LockGuard guard(mutex_);
    const std::uint64_t waiting = begun_;
    while (ended_ < waiting) {
        passed_.wait(mutex_);
    }
}

}  // namespace morvane
