#pragma once

#include "simulator/program/file_descriptor.h"

#include <string>
#include <vector>

namespace simulator {

/// Where another process can reach a running simulator.
struct Running {
    std::string process;  ///< process id
    std::string since;    ///< start, in local time
    std::string bus_name;
    std::string control_name;
    std::string bus_address;
};

/// All simulators of this user, by their files in the runtime directory. Removes stale files.
/// Throws `std::runtime_error` unless this user owns the directory and no other may access it.
std::vector<Running> FindRunning();

/// Whether its process is stopped, for example by Ctrl-Z.
bool IsStopped(const Running& running);

/// One line for a person.
std::string Describe(const Running& running);

/// Lets `FindRunning` find this process during the object's lifetime: a locked file, named by the
/// process id.
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
