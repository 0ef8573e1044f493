#pragma once

#include "console/mutex.h"

#include <condition_variable>
#include <cstdint>

namespace morvane {

/// Prevents starvation of removals waiting for the registry mutex. The menu thread unlocks that
/// mutex only while it asks the operator; with lines typed ahead that is too short for a waiting
/// thread to wake up.
class RemovalTurns {
  public:
    /// One removal on the main thread: keeps the registry mutex locked for its lifetime.
    class MORVANE_SCOPED_LOCK Removal {
      public:
        Removal(RemovalTurns& turns, Mutex& registry_mutex) MORVANE_ACQUIRES(registry_mutex);
        Removal(const Removal&) = delete;
        Removal& operator=(const Removal&) = delete;
        ~Removal() MORVANE_RELEASES;

      private:
        RemovalTurns& turns_;
        Mutex& registry_mutex_;
    };

    /// Returns when all removals that now wait for the registry mutex have finished; does not wait
    /// for later ones. The caller must not have that mutex locked.
    void LetPass() MORVANE_EXCLUDES(mutex_);

  private:
    void Begin() MORVANE_EXCLUDES(mutex_);
    void End() MORVANE_EXCLUDES(mutex_);

    Mutex mutex_;
    std::condition_variable_any passed_;
    std::uint64_t begun_ MORVANE_GUARDED_BY(mutex_) = 0;
    std::uint64_t ended_ MORVANE_GUARDED_BY(mutex_) = 0;
};

}  // namespace morvane
