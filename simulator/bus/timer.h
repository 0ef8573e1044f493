#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>

namespace simulator {

/// Calls something later in the thread that starts it, through its thread-default context. The
/// call does not happen once the timer is stopped, started anew or destroyed.
class Timer {
  public:
    /// `action` returns whether it is to be called again after the same time.
    void Start(std::chrono::milliseconds interval, std::function<bool()> action);
    void Stop() { source_.reset(); }

  private:
    struct SourceRelease {
        void operator()(GSource* source) const noexcept {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };
    std::unique_ptr<GSource, SourceRelease> source_;
};

}  // namespace simulator
