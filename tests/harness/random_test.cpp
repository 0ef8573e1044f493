#include "random/checker.h"
#include "random/output_grammar.h"
#include "random/plan.h"
#include "support/messages.h"

#include <gtest/gtest.h>

#include <csignal>
#include <set>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

std::string MistakeIn(const std::string& output, bool truncated = false,
                      std::optional<std::size_t> gap = {}) {
    return ReadOutput(output, truncated, gap).mistake.value_or("none");
}

std::string MistakeOf(const std::vector<std::string>& call) {
    return FindMistake({":1.1", "/", "com.veltrisonix.obex." + call[0], call[1], call[2]})
        .value_or("none");
}

/// A valid conversation, into which tests insert mistakes.
class ConversationChecker : public testing::Test {
  protected:
    ConversationChecker() {
        result_.ending = Ending{0, std::nullopt};
        result_.output = Normal("Filename: /a/phonebook.vcf\n");
    }

    std::size_t Mistakes() const { return FindMistakes(plan_, result_).size(); }

    void AddTrait(DaemonTrait trait) {
        plan_.steps.emplace_back();
        plan_.steps.back().event.*trait = true;
    }

    Plan plan_ = {};
    PlayResult result_;
};

std::string DescribeAll(const Plan& plan) {
    std::string text = Describe(plan);
    for (const Step& step : plan.steps) text += "\n" + Describe(step);
    return text;
}

TEST(Plans, DependOnSeedOnly) {
    std::set<std::string> plans;
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        plans.insert(DescribeAll(DrawPlan(seed)));
        EXPECT_EQ(DescribeAll(DrawPlan(seed)), DescribeAll(DrawPlan(seed)));
    }
    EXPECT_EQ(plans.size(), 100U);
}

TEST(Plans, ContainAllKindsOfStepsEventsAndTerminations) {
    std::set<Step::Kind> kinds;
    std::set<Termination> terminations;
    std::set<std::string> verbs;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        const Plan plan = DrawPlan(seed);
        terminations.insert(plan.termination);
        for (const Step& step : plan.steps) {
            kinds.insert(step.kind);
            verbs.insert(step.event.command.substr(0, step.event.command.find(' ')));
        }
    }
    EXPECT_EQ(kinds.size(), 5U);
    EXPECT_EQ(terminations.size(), 5U);
    EXPECT_EQ(verbs.size(), 31U);  // one of them is empty: no event
}

TEST(OutputGrammar, ParsesMessagesAndPrompts) {
    const std::string output = Prompt() + Notification("", "Found\n") + Heading("Title") +
                               ValuePrompt("/MaxCount") + Notification("/MaxCount", "100%\n") +
                               Green("Vantor\n") + Red("Bad\n");
    const OutputReading reading = ReadOutput(output, false);
    EXPECT_EQ(reading.mistake.value_or("none"), "none");
    const std::vector<std::string> messages = {"Found\n",  std::string(53, '*') + "\n",
                                               " Title\n", std::string(53, '-') + "\n",
                                               "100%\n",   "Vantor\n",
                                               "Bad\n"};
    EXPECT_EQ(reading.messages, messages);
    EXPECT_EQ(MistakeIn(Banner() + Prompt()), "none");
}

TEST(OutputGrammar, ReportsBytesOutsideMessages) {
    const std::string green = kGreenSequence;
    for (const std::string& output : std::vector<std::string>{
             Prompt() + "x", green + "no reset\n", green + "no reset\n" + Normal("next\n"),
             "\n" + Normal("no prompt displayed\n"), Prompt() + "\n" + Normal("not redrawn\n"),
             Prompt() + Notification("/MaxCount", "another prompt\n"),
             Prompt() + Normal("handled\n") + Notification("", "too late\n"),
             Normal(std::string(1000, 'x')), Green("Vantor/MaxCount") + Red(" >"),
             "\x1b[1;33myellow" + Normal("")})
        EXPECT_NE(MistakeIn(output), "none") << output;
    EXPECT_EQ(MistakeIn(Normal(std::string(999, 'x'))), "none");
}

TEST(OutputGrammar, AcceptsTruncatedEndAndOneGapAfterControlC) {
    const std::string truncated = Prompt() + kGreenSequence + "no res";
    EXPECT_NE(MistakeIn(truncated), "none");
    EXPECT_EQ(MistakeIn(truncated, true), "none");
    const std::string line = Lines({std::string(990, 'x')});
    EXPECT_NE(MistakeIn("x" + Normal(std::string(999, 'x')) + line + line, true), "none");
    const std::string gap = Prompt() + "[0m lost" + Normal("next\n") + Prompt();
    EXPECT_NE(MistakeIn(gap), "none");
    EXPECT_EQ(MistakeIn(gap, false, Prompt().size()), "none");
    EXPECT_NE(MistakeIn(gap + "x", false, Prompt().size()), "none");
}

TEST(CallRules, AcceptOnlyCallsThatTheToolMaySend) {
    const std::vector<std::vector<std::string>> accepted = {
        {"Client1", "CreateSession", "('a', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})"},
        {"PhonebookAccess1", "GetSize", "()"},
        {"PhonebookAccess1", "Pull", "('1A.vcf', '/tmp/card.vcf', @a{sv} {})"},
        {"PhonebookAccess1", "PullAll",
         "('/tmp/phonebook.vcf', {'MaxCount': <uint16 1>, 'Format': <'vcard30'>,"
         " 'Fields': <@as []>, 'FilterAny': <['N', 'FN']>})"},
    };
    for (const auto& call : accepted) EXPECT_EQ(MistakeOf(call), "none");
    const std::vector<std::vector<std::string>> refused = {
        {"Client2", "SetUserId", "('a',)"},
        {"Client1", "SetUser", "('a',)"},
        {"Client1", "SetUserId", "(1,)"},
        {"Client1", "SetUserId", "('123456789012345678901',)"},
        {"Client1", "SetUserId", "('\xff',)"},
        {"PhonebookAccess1", "Select", "('int', 'other')"},
        {"PhonebookAccess1", "Pull", "('1G.vcf', '/tmp/card.vcf', @a{sv} {})"},
        {"PhonebookAccess1", "Pull", "('1.vcf', '/tmp/other', @a{sv} {})"},
        {"PhonebookAccess1", "List", "({'MaxCount': <uint16 0>},)"},
        {"PhonebookAccess1", "List", "({'MaxCount': <uint32 1>},)"},
        {"PhonebookAccess1", "List", "({'Format': <'vcard21'>},)"},
        {"PhonebookAccess1", "List", "({'Unheard': <'of'>},)"},
        {"PhonebookAccess1", "GetSizeListing", "({'Order': <'indexed'>},)"},
    };
    for (const auto& call : refused) EXPECT_NE(MistakeOf(call), "none") << call[1] << call[2];
}

TEST_F(ConversationChecker, AcceptsRemainingFileOnlyIfTransferWasReplacedOrHasNoFilename) {
    const std::string output = result_.output;
    result_.files = {"phonebook.vcf"};
    EXPECT_EQ(Mistakes(), 1U);
    result_.output = output + Red("Filename property not set!");
    EXPECT_EQ(Mistakes(), 0U);
    result_.output = output + Normal("Removing: /a/phonebook.vcf\n");
    EXPECT_EQ(Mistakes(), 1U);
    result_.output = output + Normal("Filename: /a/card.vcf\n") + Normal("Removing: /a/card.vcf\n");
    EXPECT_EQ(Mistakes(), 0U);
    result_.files.emplace_back("core");
    EXPECT_EQ(Mistakes(), 1U);
}

TEST_F(ConversationChecker, AcceptsEachEndingOnlyWithItsCause) {
    const auto mistakes_of = [this](std::optional<int> status, std::optional<int> signal) {
        result_.ending = Ending{status, signal};
        return Mistakes();
    };
    EXPECT_EQ(mistakes_of(1, {}), 1U);
    result_.interrupts = 1;
    EXPECT_EQ(mistakes_of({}, SIGINT), 1U);
    result_.interrupts = 2;
    EXPECT_EQ(mistakes_of({}, SIGINT), 0U);
    EXPECT_EQ(mistakes_of({}, SIGHUP), 1U);
    result_.hung_up = true;
    EXPECT_EQ(mistakes_of({}, SIGHUP), 0U);
    EXPECT_EQ(mistakes_of({}, SIGTERM), 1U);
    result_.bus_died = true;
    EXPECT_EQ(mistakes_of({}, SIGTERM), 0U);
    result_.errors =
        "terminate called after throwing an instance of 'std::logic_error'\n"
        "  what():  basic_string: construction from null is not valid\n";
    EXPECT_EQ(mistakes_of({}, SIGABRT), 3U);
    AddTrait(&DaemonEvent::hides_address);
    EXPECT_EQ(mistakes_of({}, SIGABRT), 0U);
    result_.errors.clear();
    result_.ending.reset();
    EXPECT_EQ(Mistakes(), 1U);
}

TEST_F(ConversationChecker, ReportsErrorsChildProcessesAndMissingPrompts) {
    result_.errors = "(p:1): GLib-GIO-WARNING **: x does not match expected type y\n";
    EXPECT_EQ(Mistakes(), 1U);
    AddTrait(&DaemonEvent::mistypes_properties);
    EXPECT_EQ(Mistakes(), 0U);
    result_.orphans = {"12345"};
    result_.stuck = "type";
    result_.not_redrawn = "type";
    EXPECT_EQ(Mistakes(), 3U);
}

TEST_F(ConversationChecker, ReportsCallsOnLostSession) {
    const std::string phonebook = "com.veltrisonix.obex.PhonebookAccess1";
    result_.calls = {{":1.1", "/s", phonebook, "GetSize", "()"},
                     {":1.1", "/s", phonebook, "GetSize", "()"}};
    result_.lost_sessions = {{"/s", 2, static_cast<std::size_t>(-1)}};
    EXPECT_EQ(Mistakes(), 0U);
    result_.lost_sessions[0].from = 1;
    EXPECT_EQ(Mistakes(), 1U);
    result_.lost_sessions[0].to = 1;
    EXPECT_EQ(Mistakes(), 0U);
}

}  // namespace
}  // namespace morvane_test
