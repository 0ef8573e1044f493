#pragma once

#include <functional>
#include <string>
#include <vector>

namespace morvane_test {

/// The standard output of a function that ran in a child process.
struct CapturedRun {
    std::vector<std::string> writes;  ///< one element for each write(2), up to 4096 bytes each
    int status = 0;                   ///< the exit status

    std::string Output() const;  ///< all writes together
};

/// Runs `function` in a child process with `input` (at most 64 KiB) on standard input and captures
/// its standard output, except what it leaves unflushed. The result of `function` is the exit
/// status. A function that does not return is killed and fails the test. The test must have no
/// other threads.
CapturedRun Capture(const std::function<int()>& function, const std::string& input = "");

/// The same for a function without a result; returns its writes, or their concatenation.
std::vector<std::string> WritesOf(const std::function<void()>& function,
                                  const std::string& input = "");
std::string OutputOf(const std::function<void()>& function, const std::string& input = "");

}  // namespace morvane_test
