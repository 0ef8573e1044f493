#pragma once

#include "console/mutex.h"
#include "interfaces/glib_ptr.h"

#include <deque>
#include <functional>
#include <future>
#include <thread>

namespace simulator {

/// A thread that runs a main loop on a context of its own, which is its thread-default context.
class EventThread {
  public:
    EventThread();
    /// Dispatches pending sources, then ends the loop and joins.
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Runs the task in the thread and waits for it; rethrows its exceptions. Callable from any
    /// other thread.
    void Run(std::function<void()> task);

  private:
    void Serve();
    void RunTasks();

    morvane::GlibPtr<GMainContext> context_;
    morvane::GlibPtr<GMainLoop> loop_;
    morvane::Mutex mutex_;
    std::deque<std::packaged_task<void()>> tasks_ MORVANE_GUARDED_BY(mutex_);
    std::thread thread_;
};

}  // namespace simulator
