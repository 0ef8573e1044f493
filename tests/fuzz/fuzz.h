#pragma once

#include "support/file_descriptor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

// Called by libFuzzer, or by replay.cpp in other builds.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace morvane_fuzz {

/// The input of one run. Reading beyond its end returns zero or an empty text.
class Input {
  public:
    explicit Input(std::string bytes) : bytes_(std::move(bytes)) {}

    unsigned char Byte();
    /// Reads up to the next newline, which is not included.
    std::string Line();
    std::string Rest();

  private:
    std::string bytes_;
    std::size_t position_ = 0;
};

/// Defined by each target: checks the requirements for this input, and ends the process if one is
/// violated.
void Check(Input input);

/// Reports and ends the process unless `holds`.
void Require(bool holds, const char* what, const std::string& details = "");

template <typename Actual, typename Expected>
void RequireEqual(const Actual& actual, const Expected& expected, const char* what) {
    if (actual == expected) return;
    Require(false, what,
            testing::PrintToString(actual) + "\nexpected " + testing::PrintToString(expected));
}

/// Replaces standard input by this text during its lifetime.
class TypedInput {
  public:
    explicit TypedInput(const std::string& text);
    ~TypedInput();

  private:
    morvane_test::FileDescriptor memory_;
    morvane_test::FileDescriptor terminal_;
};

}  // namespace morvane_fuzz
