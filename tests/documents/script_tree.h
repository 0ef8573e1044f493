#pragma once

#include <string>
#include <vector>

#include "support/console.h"
#include "support/temporary_directory.h"

namespace morvane_test {

/// A folder in which scripts/demo and scripts/test run unchanged, but build, install and check
/// nothing: the programs are those of this build, and the commands that they call do nothing. CTest
/// reports that one cell of the fault matrix has passed.
class ScriptTree {
  public:
    ScriptTree();

    std::string File(const std::string& name) const { return directory_.File(name); }
    /// Writes or replaces a shell script.
    void Write(const std::string& name, const std::string& script) const;

    /// How to run a command line there, with standard error on standard output. Its temporary
    /// directory is this folder.
    ConsoleOptions Running(const std::string& command, Wiring wiring = Wiring::kPipes) const;
    /// Runs it and returns its output. Any other exit status is a failure.
    std::string OutputOf(const std::string& command, int status) const;

  private:
    TemporaryDirectory directory_;
};

}  // namespace morvane_test
