#pragma once

#include <cassert>
#include <mutex>

// Attributes for clang's -Wthread-safety. Macros, because other compilers do not know them.
#ifdef __clang__
#define MORVANE_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define MORVANE_THREAD_SAFETY(attribute)
#endif
#define MORVANE_GUARDED_BY(mutex) MORVANE_THREAD_SAFETY(guarded_by(mutex))
#define MORVANE_REQUIRES(mutex) MORVANE_THREAD_SAFETY(requires_capability(mutex))
#define MORVANE_EXCLUDES(mutex) MORVANE_THREAD_SAFETY(locks_excluded(mutex))
#define MORVANE_ACQUIRED_BEFORE(mutex) MORVANE_THREAD_SAFETY(acquired_before(mutex))
#define MORVANE_ACQUIRES(mutex) MORVANE_THREAD_SAFETY(acquire_capability(mutex))
#define MORVANE_SCOPED_LOCK MORVANE_THREAD_SAFETY(scoped_lockable)
#define MORVANE_RELEASES MORVANE_THREAD_SAFETY(release_capability())

namespace morvane {

/// A std::mutex whose use clang checks, except in constructors and destructors, which its analysis
/// skips.
class MORVANE_THREAD_SAFETY(capability("mutex")) Mutex {
  public:
    void lock() MORVANE_THREAD_SAFETY(acquire_capability()) { mutex_.lock(); }
    bool try_lock() MORVANE_THREAD_SAFETY(try_acquire_capability(true)) {
        return mutex_.try_lock();
    }
    void unlock() MORVANE_RELEASES { mutex_.unlock(); }

    /// For a lock that is passed from function to function, which the analysis does not track: the
    /// caller is responsible for what it protects.
    [[nodiscard]] std::mutex& Unchecked() { return mutex_; }
    /// Declares to the analysis that `lock` locks this mutex; debug builds check it.
    void AssertHeld(const std::unique_lock<std::mutex>& lock) const
        MORVANE_THREAD_SAFETY(assert_capability(this)) {
        assert(lock.owns_lock() && lock.mutex() == &mutex_);
        static_cast<void>(lock);
    }

  private:
    std::mutex mutex_;
};

/// Lock guard of a Mutex.
class MORVANE_SCOPED_LOCK LockGuard {
  public:
    explicit LockGuard(Mutex& mutex) MORVANE_ACQUIRES(mutex) : mutex_(mutex) { mutex_.lock(); }
    /// Adopts a mutex locked by try_lock().
    LockGuard(Mutex& mutex, std::adopt_lock_t /*taken*/) MORVANE_REQUIRES(mutex) : mutex_(mutex) {}
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
    ~LockGuard() MORVANE_RELEASES { mutex_.unlock(); }

  private:
    Mutex& mutex_;
};

}  // namespace morvane
