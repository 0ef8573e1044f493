#include "support/conversation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kFilterPrompt = Prompt(kFilterMenu);

class FilterMenus : public ConversationTest {
  protected:
    // The daemon refuses the operation: the test needs no transfer.
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

    void OpenMenu(Here here = Here::Now()) {
        Begin(GetParam(), here);
        Expect(QuestionAndPrompt(Filters()), here);
    }

    void FinishWithoutFilters(Here here = Here::Now()) {
        Enter("d", kRefused + kPhonebookPrompt, here);
        ExpectCall(Method(), GetParam().arguments, here);
    }
};

TEST_P(FilterMenu, AsksForValuesAndAcceptsOtherKeysWithoutMessage) {
    OpenPhonebook(Method());
    OpenMenu();
    for (const KeyRow& row : KeysOf(Filters())) {
        const std::string key = {row.key};
        if (key == "h" || key == "d") continue;
        SCOPED_TRACE(key);
        Type(key);
        if (row.move == Move::kEnter) {
            const PromptRow& value = RowOf(row.next);
            Expect(QuestionAndPrompt(row.next));
            Enter("x", Red(value.error + "\n") + kFilterPrompt);
            Enter(key, QuestionAndPrompt(row.next));
            Type(value.answer);
        }
        Expect(kFilterPrompt);
    }
    Enter("d", kRefused + kPhonebookPrompt);
}

TEST_P(FilterMenu, FetchesFieldsOnlyIfNoneAreStored) {
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

TEST_P(FilterMenu, IsNotOpenedIfListFilterFieldsFails) {
    OpenPhonebook(Method());
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "enough", 1);
    Begin(GetParam());
    Expect(kRefused + kPhonebookPrompt);
    EXPECT_EQ(CountCalls(Method()), 0U);
    OpenMenu();
    FinishWithoutFilters();
}

// The tool stops before the menu reads a key: the call is made without filters.
TEST_P(FilterMenu, CallsWithoutFiltersAfterInterruptBeforeFirstPrompt) {
    OpenPhonebook(Method());
    daemon().Hang("ListFilterFields", 1);
    Begin(GetParam());
    ExpectCall("ListFilterFields", "()");
    Interrupt();
    daemon().Release();
    Await(MenuOf(Filters()));
    Expect(kRefused);
    ExpectExit(0);
    ExpectCall(Method(), GetParam().arguments);
}

TEST_P(FilterMenu, SendsNothingAtEndOfInputAfterLossOfConnection) {
    OpenPhonebook(Method());
    OpenMenu();
    LoseConnection(kFilterMenu);
    console().CloseInput();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(CountCalls(Method()), 0U);
}

INSTANTIATE_TEST_SUITE_P(Operations, FilterMenu, testing::ValuesIn(FilteredOperations()),
                         [](const auto& row) { return row.param.method; });

TEST_F(FilterMenus, AcceptNumberOfOneMegabyte) {
    Start(Wired(Wiring::kPipes));
    OpenPhonebook("List");
    for (const std::string line : {"l", "c"}) Type(line);
    Await(Prompt(PromptId::kMaxCount));
    Enter(std::string(1 << 20, '9'), Red("Invalid value\n") + Prompt(PromptId::kMaxCount));
    Enter(std::string(1 << 20, '0') + "7", kFilterPrompt);
    Type(std::string(1 << 20, ' ') + "d");
    ExpectCall("List", "({'MaxCount': <uint16 7>},)");
    EXPECT_LT(console().CpuTime(), Stretched(std::chrono::seconds(5)));
}

}  // namespace
}  // namespace morvane_test
