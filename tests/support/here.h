#pragma once

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {

/// Source location of the test that calls a helper, for its failure messages. Always the last
/// parameter, with the default argument `Here::Now()`.
struct Here {
    const char* file;
    int line;

    static constexpr Here Now(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// Reports a failure at `here` and leaves the test body with an exception.
[[noreturn]] inline void FailTest(Here here, const std::string& message) {
    ADD_FAILURE_AT(here.file, here.line) << message;
    // GoogleTest does not report this exception type again.
    throw testing::AssertionException(testing::TestPartResult(
        testing::TestPartResult::kFatalFailure, here.file, here.line, message.c_str()));
}

}  // namespace morvane_test
