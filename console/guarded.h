#pragma once

#include <condition_variable>
#include <mutex>

namespace morvane {

/// A value that more than one thread uses. No way leads to it but through `Lock`, so that no lock
/// can be forgotten. Needs no destruction if the value needs none.
template <typename Value>
class Guarded {
  public:
    /// Holds the lock while it lives.
    class Access {
      public:
        [[nodiscard]] Value& operator*() const { return value_; }
        [[nodiscard]] Value* operator->() const { return &value_; }

        /// Lets go of the lock until a notification finds that `is_done` holds.
        template <typename Predicate>
        void Await(std::condition_variable& notification, Predicate is_done) {
            notification.wait(lock_, is_done);
        }

      private:
        friend class Guarded;
        Access(std::mutex& mutex, Value& value) : lock_(mutex), value_(value) {}

        std::unique_lock<std::mutex> lock_;
        Value& value_;
    };

    [[nodiscard]] Access Lock() { return Access(mutex_, value_); }

  private:
    std::mutex mutex_;
    Value value_;
};

}  // namespace morvane
