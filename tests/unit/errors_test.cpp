#include "console/errors.h"

#include "client/profile_errors.h"
#include "console/reporting.h"
#include "support/messages.h"
#include "unit/captured_run.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace morvane {
namespace {

using morvane_test::Red;

// Whether it is a runtime error and none of the others is a base of it: only it is its own base.
template <typename Error, typename... All>
constexpr bool IsUnrelated() {
    return std::is_convertible_v<Error*, std::runtime_error*> &&
           (int{std::is_base_of_v<All, Error>} + ...) == 1;
}

template <typename... Errors>
constexpr bool AreUnrelated() {
    return (IsUnrelated<Errors, Errors...>() && ...);
}

TEST(ErrorTypesTest, AreRuntimeErrorsAndNoneIsAnother) {
    EXPECT_TRUE((AreUnrelated<ProxyException, InvalidValueException, InvalidObjectException,
                              IapiException, SapiException>()));
}

// What a menu prints when its guard runs an action that throws `error`, or "propagates".
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
    return run.Output() + (run.status == 0 ? "" : "propagates");
}

// The errors that a guard must not catch.
template <typename Guard, typename... Errors>
void ExpectToPropagate(const Guard& guard, const Errors&... errors) {
    for (const std::string& outcome : {Outcome(guard, errors)...}) EXPECT_EQ(outcome, "propagates");
}

TEST(ReportErrorsTest, PrintsTheTypesThatAreNamedAndNoOthers) {
    const auto report_three = [](const auto& action) {
        ReportErrors<ProxyException, SapiException, IapiException>(action);
    };
    EXPECT_EQ(Outcome(report_three, ProxyException("100%s")), Red("100%s\n"));
    EXPECT_EQ(Outcome(report_three, SapiException("text only", 5)), Red("text only\n"));
    EXPECT_EQ(Outcome(report_three, IapiException("refused")), Red("refused\n"));
    ExpectToPropagate([](const auto& action) { ReportErrors<IapiException>(action); },
                      ProxyException("other"), InvalidObjectException("other"),
                      std::runtime_error("other"), InputEnded{});
}

TEST(ReportProfileErrorsTest, PrintsWhatEndsOnlyTheActionAndNoOthers) {
    const auto report = [](const auto& action) { ReportProfileErrors(action); };
    EXPECT_EQ(Outcome(report, InvalidValueException("value")), Red("value\n"));
    EXPECT_EQ(Outcome(report, IapiException("call")), Red("call\n"));
    EXPECT_EQ(Outcome(report, SapiException("service 100%s", -7)), Red("service 100%s -7\n"));
    EXPECT_EQ(Outcome(report, InputEnded{}), "");
    ExpectToPropagate(report, ProxyException("other"), InvalidObjectException("other"),
                      std::runtime_error("other"));
}

}  // namespace
}  // namespace morvane
