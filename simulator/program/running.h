#pragma once

#include "simulator/program/file_descriptor.h"

#include <string>
#include <vector>

namespace simulator {

/// What another process needs to know of a simulator that runs.
struct Running {
    std::string process;  ///< its id
    std::string since;    ///< local time
    std::string bus_name;
    std::string control_name;
    std::string bus_address;
};

/// All simulators of this user, by their files in the runtime directory. Files that their process
/// has left behind are removed. Throws `std::runtime_error` if the directory is not to be trusted.
std::vector<Running> FindRunning();

/// Whether its process is stopped, as by Ctrl-Z.
bool IsStopped(const Running& running);

/// One line for a person.
std::string Describe(const Running& running);

/// Lets `FindRunning` find this process as long as it lives: a file, named by the process id, with
/// a lock on it.
class RunningFile {
  public:
    /// Sets `process` and `since` itself. Throws `std::runtime_error` if the file cannot be
    /// written.
    explicit RunningFile(Running running);
    RunningFile(const RunningFile&) = delete;
    RunningFile& operator=(const RunningFile&) = delete;
    ~RunningFile();

  private:
    const std::string directory_;
    const std::string path_;
    const FileDescriptor lock_;
};

}  // namespace simulator
