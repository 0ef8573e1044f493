#pragma once

#include "support/file_descriptor.h"

#include <functional>
#include <string>

namespace morvane_test {

/// Redirects standard output to memory during its lifetime.
class CapturedOutput {
  public:
    CapturedOutput();
    ~CapturedOutput();

    /// Everything written so far.
    std::string Text() const;

  private:
    FileDescriptor memory_;
    FileDescriptor terminal_;
};

/// Runs `action` in this process and returns what it writes to standard output.
std::string Printed(const std::function<void()>& action);

}  // namespace morvane_test
