#pragma once

#include <string>

namespace morvane_test {

/// The line of the test that asks for something, so that a failure points at it.
/// Always the last parameter, with the default argument `Here::Now()`.
struct Here {
    const char* file;
    int line;

    static constexpr Here Now(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// Reports `message` as a failure at `here` and leaves the test body at once.
[[noreturn]] void FailTest(Here here, const std::string& message);

}  // namespace morvane_test
