#pragma once

#include <mutex>

// What clang's -Wthread-safety checks; other compilers see nothing. Attributes of another
// compiler can only be hidden by macros.
#if defined(__clang__)
#define MORVANE_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define MORVANE_THREAD_SAFETY(attribute)
#endif
#define MORVANE_GUARDED_BY(mutex) MORVANE_THREAD_SAFETY(guarded_by(mutex))
#define MORVANE_REQUIRES(mutex) MORVANE_THREAD_SAFETY(requires_capability(mutex))

namespace morvane {

/// A std::mutex whose use the compiler can check. Not for the registry mutex: the hold on that one
/// is passed from function to function, which the analysis does not follow.
class MORVANE_THREAD_SAFETY(capability("mutex")) Mutex {
  public:
    void lock() MORVANE_THREAD_SAFETY(acquire_capability()) { mutex_.lock(); }
    void unlock() MORVANE_THREAD_SAFETY(release_capability()) { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

/// Holds a Mutex while it lives.
class MORVANE_THREAD_SAFETY(scoped_lockable) Hold {
  public:
    explicit Hold(Mutex& mutex) MORVANE_THREAD_SAFETY(acquire_capability(mutex)) : mutex_(mutex) {
        mutex_.lock();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() MORVANE_THREAD_SAFETY(release_capability()) { mutex_.unlock(); }

  private:
    Mutex& mutex_;
};

}  // namespace morvane
