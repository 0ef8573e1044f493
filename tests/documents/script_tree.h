#pragma once

#include <string>
#include <vector>

#include "support/console.h"
#include "support/temporary_directory.h"

namespace morvane_test {

/// A folder with scripts/demo and scripts/test, the programs of this build, and stubs for the
/// commands that the scripts call. The stub of ctest reports one passed cell of the fault matrix;
/// the others do nothing.
class ScriptTree {
  public:
    ScriptTree();

    std::string File(const std::string& name) const { return directory_.File(name); }
    /// Writes a shell script.
    void Write(const std::string& name, const std::string& script) const;

    /// Options that run a command line in the folder, with standard error redirected to standard
    /// output. TMPDIR is this folder.
    ConsoleOptions Running(const std::string& command, Wiring wiring = Wiring::kPipes) const;
    /// Runs it and returns its output; fails the test unless it exits with `status`.
    std::string OutputOf(const std::string& command, int status) const;

  private:
    TemporaryDirectory directory_;
};

}  // namespace morvane_test
