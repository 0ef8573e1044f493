#pragma once

#include "console/mutex.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace morvane {

/// Gives removals their turn at the registry mutex. The menu thread lets go of that mutex only
/// while it asks the operator; with lines typed ahead that is too short for a waiting thread to
/// wake up, and a removal could wait for ever.
class RemovalTurns {
  public:
    /// One removal on the main thread: holds the registry mutex while it lives.
    class Removal {
      public:
        Removal(RemovalTurns& turns, std::mutex& registry_mutex);
        Removal(const Removal&) = delete;
        Removal& operator=(const Removal&) = delete;
        ~Removal();

      private:
        RemovalTurns& turns_;
        std::unique_lock<std::mutex> registry_lock_;
    };

    /// Waits for the removals that wait for the registry mutex at this moment, but for no later
    /// ones. The caller does not hold that mutex.
    void LetPass();

  private:
    Mutex mutex_;
    std::condition_variable_any passed_;
    std::uint64_t begun_ MORVANE_GUARDED_BY(mutex_) = 0;
    std::uint64_t ended_ MORVANE_GUARDED_BY(mutex_) = 0;
};

}  // namespace morvane
