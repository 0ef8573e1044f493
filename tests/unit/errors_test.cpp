#include "console/errors.h"

#include "console/reporting.h"
#include "support/messages.h"
#include "unit/captured_run.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using morvane::IapiException;
using morvane::InvalidObjectException;
using morvane::InvalidValueException;
using morvane::ProxyException;
using morvane::ReportErrors;
using morvane::SapiException;
using Outcomes = std::vector<std::string>;

const std::string kPrinted = Red("100%s\n");
const std::string kThrown = "thrown";

// What `guard` prints when its action throws `error`; kThrown if it does not catch it.
template <typename Guard, typename Error>
std::string OutcomeOf(const Guard& guard, const Error& error) {
    const auto run = Capture([&] {
        try {
            guard([&] { throw error; });
            return 0;
        } catch (const Error&) {
            return 1;
        }
    });
    return run.Output() + (run.status == 0 ? "" : kThrown);
}

// The outcome for each type of error.
template <typename Guard>
Outcomes OutcomesOf(const Guard& guard) {
    return {OutcomeOf(guard, ProxyException("100%s")),
            OutcomeOf(guard, InvalidValueException("100%s")),
            OutcomeOf(guard, InvalidObjectException("100%s")),
            OutcomeOf(guard, IapiException("100%s")),
            OutcomeOf(guard, SapiException("100%s", -7)),
            OutcomeOf(guard, std::runtime_error("100%s")),
            OutcomeOf(guard, morvane::InputEnded{})};
}

template <typename... Types>
Outcomes OutcomesReporting() {
    return OutcomesOf([](const auto& action) { ReportErrors<Types...>(action); });
}

TEST(ReportErrorsTest, CatchesOnlyTheListedTypes) {
    const std::string& p = kPrinted;
    const std::string& t = kThrown;
    const std::string s = Red("100%s -7\n");
    EXPECT_EQ(OutcomesReporting<ProxyException>(), (Outcomes{p, t, t, t, t, t, t}));
    EXPECT_EQ(OutcomesReporting<InvalidValueException>(), (Outcomes{t, p, t, t, t, t, t}));
    EXPECT_EQ(OutcomesReporting<InvalidObjectException>(), (Outcomes{t, t, p, t, t, t, t}));
    EXPECT_EQ(OutcomesReporting<IapiException>(), (Outcomes{t, t, t, p, t, t, t}));
    EXPECT_EQ(OutcomesReporting<SapiException>(), (Outcomes{t, t, t, t, s, t, t}));
    EXPECT_EQ(OutcomesReporting<std::runtime_error>(), (Outcomes{p, p, p, p, p, p, t}));
    EXPECT_EQ((OutcomesReporting<ProxyException, SapiException, IapiException>()),
              (Outcomes{p, t, t, p, s, t, t}));
}

}  // namespace
}  // namespace morvane_test
