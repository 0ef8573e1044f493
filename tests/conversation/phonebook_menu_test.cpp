#include "support/conversation.h"

#include <string>

namespace morvane_test {
namespace {

class PhonebookMenuTest : public ConversationTest {};

TEST_F(PhonebookMenuTest, WithoutASelectionOnlyUpdateAndFieldsWork) {
    OpenSession();
    daemon().Reply("ListFilterFields", Value("(['N'],)"));
    for (const KeyRow& row : KeysOf(PromptId::kPhonebookMenu)) {
        if (!row.needs_selection) continue;
        Type({&row.key, 1});
        Expect(Red("No Phonebook selected\n") + kPhonebookPrompt);
    }
    Type("u");
    Expect(Normal("Counters updated\n") + kPhonebookPrompt);
    Type("f");
    Expect(Heading("Filter Fields") + Lines({" N"}) + kPhonebookPrompt);
    EXPECT_EQ(daemon().Calls().size(), 3U);
}

TEST_F(PhonebookMenuTest, ExitClosesTheSession) {
    OpenSession();
    const std::string session = Session();
    Type("x");
    Expect(Prompt());
    ExpectCall("RemoveSession", "(objectpath '" + session + "',)");
    Type("h");
    Expect(MenuOf(PromptId::kMain) + Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

}  // namespace
}  // namespace morvane_test
