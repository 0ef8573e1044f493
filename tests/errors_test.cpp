#include "console/errors.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace morvane {
namespace {

template <typename Error, typename... All>
constexpr bool DerivesFromNoneOf() {
    return ((std::is_same_v<Error, All> || !std::is_base_of_v<All, Error>)&&...);
}

template <typename... Errors>
constexpr bool AreUnrelated() {
    return (DerivesFromNoneOf<Errors, Errors...>() && ...);
}

template <typename... Errors>
constexpr bool AreRuntimeErrors() {
    return (std::is_convertible_v<Errors*, std::runtime_error*> && ...);
}

template <typename Error>
class ErrorTest : public testing::Test {};

using TextOnlyErrors =
    testing::Types<ProxyException, InvalidValueException, InvalidObjectException, IapiException>;
TYPED_TEST_SUITE(ErrorTest, TextOnlyErrors);

TYPED_TEST(ErrorTest, KeepsItsTextAsARuntimeError) {
    try {
        throw TypeParam("went wrong: 100%");
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "went wrong: 100%");
    }
}

TEST(ErrorTypesTest, AreRuntimeErrorsAndNoneIsAnother) {
    EXPECT_TRUE((AreRuntimeErrors<ProxyException, InvalidValueException, InvalidObjectException,
                                  IapiException, SapiException>()));
    EXPECT_TRUE((AreUnrelated<ProxyException, InvalidValueException, InvalidObjectException,
                              IapiException, SapiException>()));
}

TEST(ErrorTypesTest, ServiceErrorCarriesASignedCode) {
    const SapiException error("refused", -7);
    EXPECT_STREQ(error.what(), "refused");
    EXPECT_EQ(error.Code(), -7);
}

}  // namespace
}  // namespace morvane
