#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

// What libFuzzer calls, and in builds without it replay.cpp.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace morvane_fuzz {

/// The bytes of one run, taken from the front. All that is beyond the end reads as zero and empty.
class Input {
  public:
    explicit Input(std::string bytes) : bytes_(std::move(bytes)) {}

    [[nodiscard]] bool IsEmpty() const { return position_ == bytes_.size(); }
    unsigned char Byte();
    /// Up to `end`, which is taken and left out.
    std::string Until(char end);
    std::string Line() { return Until('\n'); }
    std::string Rest();

  private:
    std::string bytes_;
    std::size_t position_ = 0;
};

/// Each target defines this: tries the input and ends the process if something does not hold.
void Check(Input input);

/// Ends the process with a report unless `holds`.
void Require(bool holds, const char* what, const std::string& details = "");

template <typename Actual, typename Expected>
void RequireEqual(const Actual& actual, const Expected& expected, const char* what) {
    if (!(actual == expected)) {
        Require(false, what,
                testing::PrintToString(actual) + "\nexpected " + testing::PrintToString(expected));
    }
}

}  // namespace morvane_fuzz
