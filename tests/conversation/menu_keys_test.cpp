#include "support/conversation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <tuple>
#include <vector>

// Behaviour that all menus share.

namespace morvane_test {
namespace {

std::vector<PromptRow> AllMenus() {
    std::vector<PromptRow> menus;
    for (const PromptRow& row : Prompts())
        if (row.asks == Asks::kKey && row.id != PromptId::kCancelledTransfer) menus.push_back(row);
    return menus;
}

bool HasKey(PromptId menu, char key) {
    const std::vector<KeyRow> keys = KeysOf(menu);
    return std::any_of(keys.begin(), keys.end(),
                       [key](const KeyRow& row) { return row.key == key; });
}

class MenuKeys : public ConversationTest, public testing::WithParamInterface<PromptRow> {
  protected:
    PromptId Menu() const { return GetParam().id; }

    // Invalid keys: each letter that is not a key, and each key in upper case.
    std::vector<std::string> OtherLines() const {
        std::vector<std::string> lines = {"0", "?", "-x", "  Help", "\xc3\xa4", {'\0'}};
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            const bool is_key = HasKey(Menu(), letter);
            const bool in_any_case = is_key && letter == 'q';
            if (!in_any_case)
                lines.emplace_back(1, is_key ? static_cast<char>(std::toupper(letter)) : letter);
        }
        return lines;
    }
};

TEST_P(MenuKeys, AreDisplayedByHelpAndNotByBlankLine) {
    OpenPrompt(Menu());
    for (const std::string line : {"h", "help", " \th please"}) {
        SCOPED_TRACE(line);
        Enter(line, MenuOf(Menu()) + Prompt(Menu()));
    }
    for (const char* const line : {"", "   ", "\t"}) Enter(line, Prompt(Menu()));
}

TEST_P(MenuKeys, RejectAllOtherKeys) {
    OpenPrompt(Menu());
    daemon().ForgetCalls();
    const std::vector<std::string> lines = OtherLines();
    for (const std::string& line : lines) Type(line);
    for (const std::string& line : lines) {
        SCOPED_TRACE(line);
        Expect(kInvalidSelection + Prompt(Menu()));
    }
    EXPECT_TRUE(daemon().Calls().empty());
}

INSTANTIATE_TEST_SUITE_P(, MenuKeys, testing::ValuesIn(AllMenus()),
                         [](const auto& menu) { return menu.param.name; });

class QuitKey : public ConversationTest,
                public testing::WithParamInterface<std::tuple<PromptId, const char*>> {};

TEST_P(QuitKey, ClosesSessionAndExits) {
    const auto& [menu, line] = GetParam();
    OpenPrompt(menu);
    Type(line);
    ExpectExit(0);
    EXPECT_EQ(CountCalls("RemoveSession"), InSession(menu) ? 1U : 0U);
}

// transfer_menu_test.cpp tests the transfer menu.
INSTANTIATE_TEST_SUITE_P(, QuitKey,
                         testing::Combine(testing::Values(PromptId::kMain,
                                                          PromptId::kPhonebookMenu),
                                          testing::Values("q", "Q", "quit", "  Quit")));

}  // namespace
}  // namespace morvane_test
