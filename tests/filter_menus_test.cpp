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
        for (const std::string& line : GetParam().lines) {
            if (&line != &GetParam().lines.front()) Await(Red(" ? "), here);
            Type(line, here);
        }
    }

    void OpenMenu(Here here = Here::Now()) {
        Begin(here);
        Expect(Asking(*GetParam().filters), here);
    }

    void FinishWithoutFilters(Here here = Here::Now()) {
        Type("d", here);
        Expect(kRefused + kPhonebookPrompt, here);
        ExpectCall(GetParam().method, GetParam().arguments, here);
    }
};

TEST_P(FilterMenu, ShowsItsKeysAtOnceAndOnHelp) {
    OpenPhonebook();
    OpenMenu();
    for (const std::string word : {"h", "help", "  h please"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(Asking(*GetParam().filters));
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
    const std::vector<KeyRow> keys = KeysOf(*GetParam().filters);
    std::string others = "QX0?%";
    for (const char key : std::string("abcdefghijklmnopqrstuvwxyz")) {
        const bool offered = std::any_of(keys.begin(), keys.end(),
                                         [key](const KeyRow& row) { return row.key == key; });
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
    Expect(Asking(*GetParam().filters));
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

INSTANTIATE_TEST_SUITE_P(Operations, FilterMenu, testing::ValuesIn(FilteredOperations()),
                         [](const auto& row) { return row.param.method; });

}  // namespace
}  // namespace morvane_test
