#pragma once

#include "console/mutex.h"

#include <string>

namespace simulator {

/// Standard output of the program. Answers and lines of the log wait until the first line, which
/// reports that the daemon is ready, was written. Safe from any thread.
class Output {
  public:
    void Begin(const std::string& first_line);
    void Print(const std::string& text);

  private:
    void Write() MORVANE_REQUIRES(mutex_);

    morvane::Mutex mutex_;
    std::string waiting_ MORVANE_GUARDED_BY(mutex_);
    bool begun_ MORVANE_GUARDED_BY(mutex_) = false;
};

}  // namespace simulator
