#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using std::chrono::milliseconds;

const std::string kPhonebookPrompt = Prompt("/Phonebook Menu");
const std::string kFilterPrompt = Prompt("/Filter Menu");
const std::string kRefused =
    Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: enough\n");

// An operation and the filter menu in front of it.
struct Operation {
    std::string method;
    std::vector<std::string> opening;  // typed from the phone book menu's prompt on
    std::string keys;                  // offered
    std::string (*menu)();
    std::string without_filters;  // its arguments
};

const std::string kPullAllKeys = "fcomarsijklud";
const std::string kListKeys = "rcomijklud";
const std::string kSizeKeys = "mijklud";
const std::string kNoFilters = "(@a{sv} {},)";

const Operation kOperations[] = {
    {"PullAll", {"a"}, kPullAllKeys, PullAllFilterMenu, "('/tmp/phonebook.vcf', @a{sv} {})"},
    {"Pull", {"p", "1"}, "farsd", PullFilterMenu, "('1.vcf', '/tmp/card.vcf', @a{sv} {})"},
    {"List", {"l"}, kListKeys, ListFilterMenu, kNoFilters},
    {"Search", {"o", "0", ""}, kListKeys, ListFilterMenu, "('name', '', @a{sv} {})"},
    {"GetSizePhonebook", {"m"}, kSizeKeys, SizeFilterMenu, kNoFilters},
    {"GetSizeListing", {"n"}, kSizeKeys, SizeFilterMenu, kNoFilters},
};

class FilterMenu : public ConversationTest, public testing::WithParamInterface<Operation> {
  protected:
    // In every operation's way stands a daemon that refuses it, which costs the least time.
    void OpenPhonebook(Wiring wiring = Wiring::kTerminal, Here here = Here::Now()) {
        Start(Wired(wiring), here);
        OpenSelectedSession(here);
        daemon().Refuse(GetParam().method, "com.veltrisonix.Error.Failed", "enough");
    }

    // The menu is about to be drawn, or what stands in its way.
    void Begin(Here here = Here::Now()) {
        for (const std::string& line : GetParam().opening) {
            if (&line != &GetParam().opening.front()) Await(Red(" ? "), here);
            Type(line, here);
        }
    }

    void OpenMenu(Here here = Here::Now()) {
        Begin(here);
        Expect(GetParam().menu() + kFilterPrompt, here);
    }

    void FinishWithoutFilters(Here here = Here::Now()) {
        Type("d", here);
        Expect(kRefused + kPhonebookPrompt, here);
        ExpectCall(GetParam().method, GetParam().without_filters, here);
    }
};

TEST_P(FilterMenu, ShowsItsKeysAtOnceAndOnHelp) {
    OpenPhonebook();
    OpenMenu();
    for (const std::string word : {"h", "help", "  h please"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(GetParam().menu() + kFilterPrompt);
    }
    FinishWithoutFilters();
}

TEST_P(FilterMenu, ShowsItsPromptAgainAfterABlankLine) {
    OpenPhonebook();
    OpenMenu();
    for (const std::string line : {"", "   ", "\t"}) {
        Type(line);
        Expect(kFilterPrompt);
    }
    FinishWithoutFilters();
}

TEST_P(FilterMenu, ShowsWhatHappensMeanwhile) {
    OpenPhonebook();
    OpenMenu();
    ExpectQuiet("/Filter Menu");
    Type("Z");
    Expect(Red("Invalid Selection\n") + kFilterPrompt);
    ExpectQuiet("/Filter Menu");
}

TEST_P(FilterMenu, OffersNoOtherKey) {
    std::string others = "QX0?%";
    for (const char key : std::string("abcdefgijklmnopqrstuvwxyz")) {
        const bool offered = GetParam().keys.find(key) != std::string::npos;
        others += offered ? static_cast<char>(std::toupper(key)) : key;
    }
    OpenPhonebook();
    OpenMenu();
    for (const char key : others) Type(std::string(1, key));
    for (const char key : others) {
        SCOPED_TRACE(key);
        Expect(Red("Invalid Selection\n") + kFilterPrompt);
    }
    FinishWithoutFilters();
}

TEST_P(FilterMenu, TakesAKeyOfAMegabyte) {
    OpenPhonebook(Wiring::kPipes);
    OpenMenu();
    Type(std::string(1 << 20, 'z'));
    Expect(Red("Invalid Selection\n") + kFilterPrompt);
    Type(std::string(1 << 20, ' ') + "h");
    Expect(GetParam().menu() + kFilterPrompt);
    EXPECT_LT(console().CpuTime(), Stretched(milliseconds(5000)));
}

TEST_P(FilterMenu, FetchesTheFieldsOnlyIfThereAreNone) {
    OpenPhonebook();
    daemon().Reply("ListFilterFields", Value("(@as [],)"));
    for (const std::size_t calls : {1U, 2U}) {
        OpenMenu();
        EXPECT_EQ(CountCalls("ListFilterFields"), calls);
        FinishWithoutFilters();
    }
    daemon().Reply("ListFilterFields", Value("(['N'],)"));
    for (int opening = 0; opening < 2; ++opening) {
        OpenMenu();
        EXPECT_EQ(CountCalls("ListFilterFields"), 3U);
        FinishWithoutFilters();
    }
}

TEST_P(FilterMenu, UsesFieldsThatWereListedBefore) {
    OpenPhonebook();
    Type("f");
    Await(kPhonebookPrompt);
    OpenMenu();
    EXPECT_EQ(CountCalls("ListFilterFields"), 1U);
    FinishWithoutFilters();
}

TEST_P(FilterMenu, IsNotShownWhenTheFieldsAreRefused) {
    OpenPhonebook();
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "no fields", 1);
    Begin();
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: no fields\n") +
           kPhonebookPrompt);
    EXPECT_EQ(CountCalls(GetParam().method), 0U);
    OpenMenu();
    FinishWithoutFilters();
}

INSTANTIATE_TEST_SUITE_P(Operations, FilterMenu, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.method; });

}  // namespace
}  // namespace morvane_test
