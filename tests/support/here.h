#pragma once

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {

/// The line of the test that calls a helper, so that a failure points at it.
/// Always the last parameter, with the default argument `Here::Now()`.
struct Here {
    const char* file;
    int line;

    static constexpr Here Now(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// Reports `message` as a failure at `here` and leaves the test body at once.
[[noreturn]] inline void FailTest(Here here, const std::string& message) {
    ADD_FAILURE_AT(here.file, here.line) << message;
    // GoogleTest does not report this type again.
    throw testing::AssertionException(testing::TestPartResult(
        testing::TestPartResult::kFatalFailure, here.file, here.line, message.c_str()));
}

}  // namespace morvane_test
