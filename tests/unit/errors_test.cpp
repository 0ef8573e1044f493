#include "console/errors.h"

#include "console/reporting.h"
#include "support/captured_output.h"
#include "support/messages.h"

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

template <typename... Reported, typename Error>
std::string Outcome(const Error& error) {
    bool thrown = false;
    const std::string printed = Printed([&] {
        try {
            ReportErrors<Reported...>([&] { throw error; });
        } catch (const Error&) {
            thrown = true;
        }
    });
    return thrown ? printed + kThrown : printed;
}

// The outcome for each type of error.
template <typename... Reported>
Outcomes OutcomesReporting() {
    return {Outcome<Reported...>(ProxyException("100%s")),
            Outcome<Reported...>(InvalidValueException("100%s")),
            Outcome<Reported...>(InvalidObjectException("100%s")),
            Outcome<Reported...>(IapiException("100%s")),
            Outcome<Reported...>(SapiException("100%s", -7)),
            Outcome<Reported...>(std::runtime_error("100%s")),
            Outcome<Reported...>(morvane::InputEnded{})};
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
