#pragma once

#include "support/file_descriptor.h"

#include <functional>
#include <string>

namespace morvane_test {

/// Standard output goes to memory while this lives.
class CapturedOutput {
  public:
    CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput();

    /// All of it so far.
    std::string Text() const;

  private:
    FileDescriptor memory_;
    FileDescriptor terminal_;
};

/// What `action` writes to standard output, in this process.
std::string Printed(const std::function<void()>& action);

}  // namespace morvane_test
