#include "support/conversation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kFilterPrompt = Prompt(kFilterMenu);
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n");

class FilterMenus : public ConversationTest {
  protected:
    // The daemon refuses the operation, which costs the least time.
    void OpenPhonebook(const std::string& method,
                       const std::vector<std::string>& fields = FilterFields(),
                       Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().Reply("ListFilterFields", Value(FilterFieldsReply(fields)));
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", "enough");
    }
};

class FilterMenu : public FilterMenus, public testing::WithParamInterface<Operation> {
  protected:
    const std::string& Method() const { return GetParam().method; }
    PromptId Filters() const { return *GetParam().filters; }

    // The next output is the menu, or what prevents it.
    void Begin(Here here = Here::Now()) {
        for (const std::string& line : GetParam().lines) {
            if (&line != &GetParam().lines.front()) Await(Red(" ? "), here);
            Type(line, here);
        }
    }

    void OpenMenu(Here here = Here::Now()) {
        Begin(here);
        Expect(Asking(Filters()), here);
    }

    void BeginInAHangingCall(Here here = Here::Now()) {
        OpenPhonebook(Method(), FilterFields(), here);
        daemon().Hang("ListFilterFields", 1);
        Begin(here);
        ExpectCall("ListFilterFields", "()", here);
    }

    void FinishWithoutFilters(Here here = Here::Now()) {
        Type("d", here);
        Expect(kRefused + kPhonebookPrompt, here);
        ExpectCall(Method(), GetParam().arguments, here);
    }
};

TEST_P(FilterMenu, ShowsItsKeysAtOnceAndOnHelp) {
    OpenPhonebook(Method());
    OpenMenu();
    for (const std::string word : {"h", "help", "  h please"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(Asking(Filters()));
    }
    FinishWithoutFilters();
}

TEST_P(FilterMenu, AsksForEachValueAndTakesTheOtherKeysWithoutAWord) {
    OpenPhonebook(Method());
    OpenMenu();
    for (const KeyRow& row : KeysOf(Filters())) {
        const std::string key = {row.key};
        if (key == "h" || key == "d") continue;
        SCOPED_TRACE(key);
        Type(key);
        if (row.move == Move::kEnter) {
            const PromptRow& value = RowOf(row.next);
            Expect(Asking(row.next));
            Type("x");
            Expect(Red(value.error + "\n") + kFilterPrompt);
            Type(key);
            Expect(Asking(row.next));
            Type(value.answer);
        }
        Expect(kFilterPrompt);
    }
    Type("d");
    Expect(kRefused + kPhonebookPrompt);
}

TEST_P(FilterMenu, OffersNoOtherKeyAndIgnoresBlankLines) {
    const std::vector<KeyRow> keys = KeysOf(Filters());
    std::vector<std::string> others = {"quit", "Q", "X", "0", "?", "%"};
    for (const char key : std::string("abcdefghijklmnopqrstuvwxyz")) {
        const bool offered = std::any_of(keys.begin(), keys.end(),
                                         [key](const KeyRow& row) { return row.key == key; });
        others.emplace_back(1, offered ? static_cast<char>(std::toupper(key)) : key);
    }
    OpenPhonebook(Method());
    OpenMenu();
    for (const std::string line : {"", "   ", "\t"}) {
        Type(line);
        Expect(kFilterPrompt);
    }
    for (const std::string& key : others) Type(key);
    for (const std::string& key : others) {
        SCOPED_TRACE(key);
        Expect(kInvalidSelection + kFilterPrompt);
    }
    FinishWithoutFilters();
}

TEST_P(FilterMenu, FetchesTheFieldsOnlyIfThereAreNone) {
    OpenPhonebook(Method(), {});
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

TEST_P(FilterMenu, IsNotShownWhenTheFieldsAreRefused) {
    OpenPhonebook(Method());
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "no fields", 1);
    Begin();
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: no fields\n") +
           kPhonebookPrompt);
    EXPECT_EQ(CountCalls(Method()), 0U);
    OpenMenu();
    FinishWithoutFilters();
}

TEST_P(FilterMenu, EndsWhenTheSessionIsLostBeforeTheFirstPrompt) {
    BeginInAHangingCall();
    daemon().SetConnectionState(Session(), 0);
    daemon().Notify(Session(), simulator::kPhonebookInterface, "Folder", Value("'seen'"));
    Await(Normal("Folder: seen\n"));
    daemon().Release();
    Expect(MenuOf(Filters()) + kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
}

// The tool has stopped before the menu asks anything: the call is made without filters.
TEST_P(FilterMenu, EndsAsIfDoneAfterAnInterruptBeforeTheFirstPrompt) {
    BeginInAHangingCall();
    Interrupt();
    daemon().Release();
    Await(MenuOf(Filters()));
    Expect(kRefused);
    ExpectExit(0);
    ExpectCall(Method(), GetParam().arguments);
}

TEST_P(FilterMenu, SendsNothingAtTheEndOfInputInALostSession) {
    OpenPhonebook(Method());
    OpenMenu();
    LoseConnection(kFilterMenu);
    console().CloseInput();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(CountCalls(Method()), 0U);
}

INSTANTIATE_TEST_SUITE_P(Operations, FilterMenu, testing::ValuesIn(FilteredOperations()),
                         [](const auto& row) { return row.param.method; });

TEST_F(FilterMenus, UseFieldsThatWereListedBefore) {
    OpenPhonebook("List");
    Type("f");
    Await(kPhonebookPrompt);
    Type("l");
    Expect(Asking(PromptId::kListFilters));
    EXPECT_EQ(CountCalls("ListFilterFields"), 1U);
}

TEST_F(FilterMenus, WithoutFieldsEveryFieldIsRefused) {
    OpenPhonebook("PullAll", {});
    Type("a");
    Await(kFilterPrompt);
    for (const std::string key : {"s", "k"}) {
        for (const std::string answer : {"0", "1", "x", "4294967295"}) {
            SCOPED_TRACE(key + answer);
            Type(key);
            Expect(Heading("Select a Filter Field") + Prompt(PromptId::kField));
            Type(answer);
            Expect(Red("Invalid filter selected\n") + kFilterPrompt);
        }
    }
    Type("d");
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
}

TEST_F(FilterMenus, OfferEachFieldByItsNumber) {
    OpenPhonebook("GetSizePhonebook");
    Type("m");
    for (std::size_t field = 0; field < FilterFields().size(); ++field) {
        Type("k");
        Type(std::to_string(field));
    }
    for (const std::string line : {"l", "1", "d"}) Type(line);
    const std::string all = FilterFieldsReply();
    ExpectCall("GetSizePhonebook", "({'FilterAny': <" + all.substr(1, all.size() - 3) + ">},)");
}

TEST_F(FilterMenus, TakeANumberOfAMegabyte) {
    Start(Wired(Wiring::kPipes));
    OpenPhonebook("List");
    for (const std::string line : {"l", "c"}) Type(line);
    Await(Prompt(PromptId::kMaxCount));
    Type(std::string(1 << 20, '9'));
    Expect(Red("Invalid value\n") + Prompt(PromptId::kMaxCount));
    Type(std::string(1 << 20, '0') + "7");
    Expect(kFilterPrompt);
    Type(std::string(1 << 20, ' ') + "d");
    ExpectCall("List", "({'MaxCount': <uint16 7>},)");
    EXPECT_LT(console().CpuTime(), Stretched(std::chrono::seconds(5)));
}

}  // namespace
}  // namespace morvane_test
