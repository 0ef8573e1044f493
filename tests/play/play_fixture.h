#pragma once

#include "support/console.h"
#include "support/file_descriptor.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace morvane_test {

/// How morvane-play ended, and what it printed on both streams.
struct PlayResult {
    int status;
    std::string output;
};

/// Options that run morvane-play with these arguments. Standard error is redirected to standard
/// output.
ConsoleOptions Playing(const std::vector<std::string>& arguments);

/// Shell functions for a script in place of the tool: `prompt TEXT MARKER` reads an answer,
/// `notify MESSAGE TEXT` prints a message while the prompt TEXT is displayed.
extern const char kFakeTool[];
/// A script with a prompt, which prints "got" and the answer.
extern const char kOnePrompt[];

/// Fails unless the process of this ID was ended and reaped: until then it is in /proc.
void ExpectGone(const std::string& process);

/// Plays the session with the tool and morvane-simulator, which gets these options.
PlayResult PlayOnSimulator(const std::string& session, const std::vector<std::string>& options);

/// Plays files against a shell script in place of the tool.
class PlayTest : public testing::Test {
  protected:
    void Write(const std::string& name, const std::string& text) const;
    void WriteProgram(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;
    bool Exists(const std::string& name) const;

    void MakePipe() const;
    /// Writes to the pipe of MakePipe() once the script has opened it. Throws std::runtime_error on
    /// time-out. The script's input ends when the result is destroyed.
    FileDescriptor WriteToPipe(std::string_view text = "") const;

    /// Runs morvane-play in the test's directory, with these arguments and shell redirections.
    PlayResult Run(const std::vector<std::string>& arguments,
                   const std::string& redirections = "") const;
    /// Plays `session` as a.session against this script.
    PlayResult Play(const std::string& session, const std::string& script,
                    std::vector<std::string> options = {}) const;
    /// Options for a `Console` that plays the same.
    ConsoleOptions Starting(const std::string& session, const std::string& script,
                            std::vector<std::string> options = {}) const;
    /// A command line: a time-out that no slow machine reaches, `words`, "--", and the command that
    /// runs `script` in place of the tool.
    std::vector<std::string> Behind(const std::string& script,
                                    std::vector<std::string> words = {}) const;

    const TemporaryDirectory& directory() const { return directory_; }

  private:
    TemporaryDirectory directory_;
};

}  // namespace morvane_test
