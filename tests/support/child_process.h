#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

#include "support/patience.h"

namespace morvane_test {

/// Parameters of a child process. It gets copies of the descriptors; the caller keeps its own.
struct ChildSetup {
    std::vector<std::string> command;
    std::vector<std::string> environment;  ///< the complete environment, as "NAME=value"
    std::string directory;
    int input;
    int output;
    int errors;
    bool terminal = false;        ///< make `input` the controlling terminal
    bool ignore_hang_up = false;  ///< ignore SIGHUP, as nohup(1) does
};

/// Exit status or terminating signal of a process.
struct Ending {
    std::optional<int> status;
    std::optional<int> signal;

    std::string Describe() const;
};

/// A running program. It is killed when this object is destroyed or the test process ends.
class ChildProcess {
  public:
    /// Throws std::runtime_error if the program cannot be started.
    explicit ChildProcess(const ChildSetup& setup);
    ~ChildProcess();

    pid_t Id() const { return id_; }

    /// Does nothing if the process has ended.
    void Signal(int number);

    /// Returns nullopt if the process is still running after `limit`.
    std::optional<Ending> AwaitEnd(Duration limit);

    /// CPU time used so far, or the total if it has ended.
    std::chrono::microseconds CpuTime();

  private:
    void AwaitAndReap();

    pid_t id_ = 0;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::optional<Ending> ending_;           // guarded by mutex_
    std::chrono::microseconds cpu_time_{0};  // guarded by mutex_; set on exit
    std::thread reaper_;
};

}  // namespace morvane_test
