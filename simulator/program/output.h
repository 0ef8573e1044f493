#pragma once

#include "console/mutex.h"

#include <glib.h>

#include <functional>
#include <string>

namespace simulator {

/// Standard output of the program. Buffers answers and log lines until `Begin` has written the
/// first line, which reports that the daemon is ready. Safe from any thread, except `WriteBy`.
class Output {
  public:
    using Writer = std::function<void(const std::string& text)>;

    void Begin(const std::string& first_line);
    void Print(const std::string& text);
    /// Sets the function that writes from now on, called in the thread of the default main context
    /// only, which must be the calling thread. If empty, `Print` writes directly again. Call it
    /// after `Begin`.
    void WriteBy(Writer writer);
    /// Writes the buffered text with the writer. Call it in the writer's thread.
    void Flush();

  private:
    void Write() MORVANE_REQUIRES(mutex_);

    Writer writer_;  // set and called in one thread
    morvane::Mutex mutex_;
    std::string waiting_ MORVANE_GUARDED_BY(mutex_);
    bool begun_ MORVANE_GUARDED_BY(mutex_) = false;
    bool is_deferred_ MORVANE_GUARDED_BY(mutex_) = false;  // a writer is set
    guint flush_ MORVANE_GUARDED_BY(mutex_) = 0;           // ID of the pending idle source
};

}  // namespace simulator
