#pragma once

#include "support/file_descriptor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

// Called by libFuzzer, and by replay.cpp in builds without it.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace morvane_fuzz {

/// The bytes of one run, read from the front. Everything beyond the end is zero and empty.
class Input {
  public:
    explicit Input(std::string bytes) : bytes_(std::move(bytes)) {}

    unsigned char Byte();
    /// Up to the next newline, which is consumed and left out.
    std::string Line();
    std::string Rest();

  private:
    std::string bytes_;
    std::size_t position_ = 0;
};

/// Defined by each target: tries the input and ends the process if a requirement is not met.
void Check(Input input);

/// Ends the process with a report unless `holds`.
void Require(bool holds, const char* what, const std::string& details = "");

template <typename Actual, typename Expected>
void RequireEqual(const Actual& actual, const Expected& expected, const char* what) {
    if (actual == expected) return;
    Require(false, what,
            testing::PrintToString(actual) + "\nexpected " + testing::PrintToString(expected));
}

/// Standard input is this text, and then its end, while this lives.
class TypedInput {
  public:
    explicit TypedInput(const std::string& text);
    TypedInput(const TypedInput&) = delete;
    TypedInput& operator=(const TypedInput&) = delete;
    ~TypedInput();

  private:
    morvane_test::FileDescriptor memory_;
    morvane_test::FileDescriptor terminal_;
};

}  // namespace morvane_fuzz
