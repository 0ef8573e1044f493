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
    /// From now on `writer` writes, in the thread of the default main context only, which is the
    /// caller's. Empty: `Print` writes itself again. Call it after `Begin`.
    void WriteBy(Writer writer);
    /// Lets the writer write what waits, in its thread.
    void Flush();

  private:
    void Write() MORVANE_REQUIRES(mutex_);

    Writer writer_;  // set and called in one thread
    morvane::Mutex mutex_;
    std::string waiting_ MORVANE_GUARDED_BY(mutex_);
    bool begun_ MORVANE_GUARDED_BY(mutex_) = false;
    bool is_deferred_ MORVANE_GUARDED_BY(mutex_) = false;  // there is a writer
    guint flush_ MORVANE_GUARDED_BY(mutex_) = 0;           // source
};

}  // namespace simulator
