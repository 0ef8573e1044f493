#include "support/here.h"

#include <gtest/gtest.h>

namespace morvane_test {

void FailTest(Here here, const std::string& message) {
    constexpr auto kKind = testing::TestPartResult::kFatalFailure;
    testing::internal::AssertHelper(kKind, here.file, here.line, message.c_str()) =
        testing::Message();
    // This type tells GoogleTest that the failure has been reported already.
    throw testing::AssertionException(
        testing::TestPartResult(kKind, here.file, here.line, message.c_str()));
}

}  // namespace morvane_test
