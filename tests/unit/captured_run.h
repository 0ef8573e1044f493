#pragma once

#include <functional>
#include <string>
#include <vector>

namespace morvane_test {

/// What a function wrote to standard output in a process of its own.
struct CapturedRun {
    std::vector<std::string> writes;  ///< one element for each write(2), up to 4096 bytes each
    int status = 0;                   ///< the exit status

    std::string Output() const;  ///< all writes together
};

/// Runs `function` in a child process with `input` (up to the size of a pipe, 64 KiB) on standard
/// input, followed by its end, and standard output captured. Output that the function leaves
/// unflushed is lost. What `function` returns becomes the exit status. A function that does not
/// return is killed and fails the test. Call it only while the test has no other threads.
CapturedRun Capture(const std::function<int()>& function, const std::string& input = "");

/// The same for what returns nothing: its writes, or all of them together.
std::vector<std::string> WritesOf(const std::function<void()>& function,
                                  const std::string& input = "");
std::string OutputOf(const std::function<void()>& function, const std::string& input = "");

}  // namespace morvane_test
