#include "console/errors.h"

#include "client/profile_errors.h"
#include "console/reporting.h"
#include "support/captured_run.h"
#include "support/messages.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace morvane {
namespace {

using morvane_test::Red;

template <typename Error, typename... All>
constexpr bool DerivesFromNoneOf() {
    // Each class is its own base.
    return (int{std::is_base_of_v<All, Error>} + ...) == 1;
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
// The empty argument: before C++20 a macro's "..." must not be left out.
TYPED_TEST_SUITE(ErrorTest, TextOnlyErrors, );

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

// What a menu prints when its guard runs an action that throws `error`, or that the error goes up.
template <typename Guard, typename Error>
std::string Outcome(const Guard& guard, const Error& error) {
    const auto run = morvane_test::Capture([&] {
        try {
            guard([&] { throw error; });
            return 0;
        } catch (const Error&) {
            return 1;
        }
    });
    return run.Output() + (run.status == 0 ? "" : "goes up");
}

template <typename... Caught>
constexpr auto kReport = [](const auto& action) { ReportErrors<Caught...>(action); };
constexpr auto kReportInProfile = [](const auto& action) { ReportProfileErrors(action); };

TEST(ReportErrorsTest, PrintsTheTypesThatAreNamed) {
    const auto report = kReport<ProxyException, SapiException, IapiException>;
    EXPECT_EQ(Outcome(report, ProxyException("100%s")), Red("100%s\n"));
    EXPECT_EQ(Outcome(report, SapiException("text only", 5)), Red("text only\n"));
    EXPECT_EQ(Outcome(report, IapiException("refused")), Red("refused\n"));
}

TEST(ReportErrorsTest, LetsAllOthersGoUp) {
    const auto report = kReport<IapiException>;
    EXPECT_EQ(Outcome(report, ProxyException("other")), "goes up");
    EXPECT_EQ(Outcome(report, InvalidObjectException("other")), "goes up");
    EXPECT_EQ(Outcome(report, std::runtime_error("other")), "goes up");
    EXPECT_EQ(Outcome(report, InputEnded{}), "goes up");
}

TEST(ReportProfileErrorsTest, PrintsWhatEndsOnlyTheAction) {
    EXPECT_EQ(Outcome(kReportInProfile, InvalidValueException("value")), Red("value\n"));
    EXPECT_EQ(Outcome(kReportInProfile, IapiException("call")), Red("call\n"));
    EXPECT_EQ(Outcome(kReportInProfile, SapiException("service 100%s", -7)),
              Red("service 100%s -7\n"));
    EXPECT_EQ(Outcome(kReportInProfile, InputEnded{}), "");
}

TEST(ReportProfileErrorsTest, LetsAllOthersGoUp) {
    EXPECT_EQ(Outcome(kReportInProfile, ProxyException("other")), "goes up");
    EXPECT_EQ(Outcome(kReportInProfile, InvalidObjectException("other")), "goes up");
    EXPECT_EQ(Outcome(kReportInProfile, std::runtime_error("other")), "goes up");
}

}  // namespace
}  // namespace morvane
