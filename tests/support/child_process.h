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

/// What a child process is started with. The descriptors stay the caller's; the child gets copies.
struct ChildSetup {
    std::vector<std::string> command;
    std::vector<std::string> environment;  ///< all of it, as "NAME=value"
    std::string directory;
    int input;
    int output;
    int errors;
    bool terminal = false;        ///< `input` is a terminal that shall be the child's own
    bool ignore_hang_up = false;  ///< as nohup(1) does
};

/// How a process ended: with an exit status, or by a signal.
struct Ending {
    std::optional<int> status;
    std::optional<int> signal;

    std::string Describe() const;
};

/// A running program. It never outlives this object nor the test's process.
class ChildProcess {
  public:
    /// Throws std::runtime_error if the program cannot be started.
    explicit ChildProcess(const ChildSetup& setup);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t Id() const { return id_; }

    /// Does nothing once the process has ended.
    void Signal(int number);

    /// Nothing if the process still runs after `limit`.
    std::optional<Ending> AwaitEnd(Duration limit);

    /// Processor time used so far, or in all once it has ended.
    std::chrono::microseconds CpuTime();

  private:
    void AwaitAndReap();

    pid_t id_ = 0;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::optional<Ending> ending_;           // mutex_
    std::chrono::microseconds cpu_time_{0};  // mutex_; once ended
    std::thread reaper_;
};

}  // namespace morvane_test
