#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>

namespace simulator {

/// Calls a function after a delay in the thread that starts the timer, through its thread-default
/// context. Stopping, restarting or destroying the timer cancels the call.
class Timer {
  public:
    /// `action` returns whether to call it again after the same delay.
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
