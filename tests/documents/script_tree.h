#pragma once

#include <string>
#include <vector>

#include "support/console.h"
#include "support/temporary_directory.h"

namespace morvane_test {

/// A folder in which scripts/demo and scripts/test run as they are, but build, install and check
/// nothing: the programs are those of this build, and what would do the work does nothing. CTest
/// reports that one cell of the fault matrix has passed.
class ScriptTree {
  public:
    ScriptTree();

    std::string File(const std::string& name) const { return directory_.File(name); }
    /// Puts a shell script there, also in the place of another.
    void Write(const std::string& name, const std::string& script) const;

    /// How to run a command line there, with standard error on standard output. What it leaves in
    /// the temporary directory goes with this object.
    ConsoleOptions Running(const std::string& command, Wiring wiring) const;

  private:
    void WriteProgram(const std::string& name, const std::string& path) const;

    TemporaryDirectory directory_;
};

}  // namespace morvane_test
