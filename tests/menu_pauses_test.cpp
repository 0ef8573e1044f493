#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPause(200);
constexpr int kTries = 10;

const std::string kInvalidSelection = Red("Invalid Selection\n");

// A menu of the session.
struct Menu {
    std::string name;
    std::vector<std::string> opening;  // typed from the phone book menu's prompt on
    std::string segment;
    std::string lost;
};

const std::string kPhonebookGone = Red("Phonebook Access Proxy is invalid\n");

const Menu kTransferMenu = {"Transfer", {"a", "d"}, "/Transfer Menu", kPhonebookGone};

const Menu kMenus[] = {
    {"Phonebook", {}, "/Phonebook Menu", Red("Client Proxy is invalid\n")},
    {"PullAllFilters", {"a"}, "/Filter Menu", kPhonebookGone},
    {"PullFilters", {"p", "1"}, "/Filter Menu", kPhonebookGone},
    {"ListFilters", {"l"}, "/Filter Menu", kPhonebookGone},
    {"SizeFilters", {"m"}, "/Filter Menu", kPhonebookGone},
    kTransferMenu,
};

class MenuPause : public ConversationTest, public testing::WithParamInterface<Menu> {
  protected:
    void OpenMenu(Here here = Here::Now()) {
        OpenSelectedSession(here);
        // Otherwise a transfer ends with its session, and says so at a moment of its own.
        daemon().Reply("RemoveSession", Value("()"));
        for (const std::string& line : GetParam().opening) Type(line, here);
        if (!GetParam().opening.empty()) Await(Prompt(GetParam().segment), here);
    }

    // How long the tool takes from the line to the prompt of the menu.
    milliseconds TimeToPrompt(const std::string& line, Here here = Here::Now()) {
        const auto begin = std::chrono::steady_clock::now();
        Type(line, here);
        Await(Prompt(GetParam().segment), here);
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
    }

    // The menu pauses after an answer. Whether it has heard in the pause that the session is lost:
    // then its prompt does not come. Ends at the main menu, which has listed its keys if so.
    bool HearsOfALossInItsPause(Here here = Here::Now()) {
        const std::size_t begin = console().Output().size();
        Type("Z", here);
        Expect(kInvalidSelection, here);
        daemon().SetConnectionState(Session(), 0);
        Type("h", here);
        Await(Prompt(), here);
        const std::string heard = kInvalidSelection + GetParam().lost;
        return console().Output().find(heard, begin) != std::string::npos;
    }
};

// On a slow machine the news may come too late for a pause of 200 ms, but not every time.
TEST_P(MenuPause, EndsWithALookAtTheSession) {
    for (int tries = 0; tries < kTries; ++tries) {
        OpenMenu();
        if (HearsOfALossInItsPause()) return Expect(MainMenu() + Prompt());
    }
    FAIL() << "the menu asked for a key " << kTries << " times";
}

// The fastest of several tries shows that no second pause was made, however slow the machine is.
TEST_P(MenuPause, IsMadeOnceBeforeAPrompt) {
    OpenMenu();
    milliseconds fastest = TimeToPrompt("Z");
    for (int tries = 1; tries < kTries && fastest >= kPause * 2; ++tries)
        fastest = std::min(fastest, TimeToPrompt("Z"));
    EXPECT_GE(fastest, kPause);
    EXPECT_LT(fastest, kPause * 2);
}

class TransferMenuPause : public MenuPause {};

// Time for the transfer's first notices.
TEST_P(TransferMenuPause, IsMadeTwiceBeforeTheFirstPrompt) {
    OpenSelectedSession();
    milliseconds fastest(kPause * 3);
    for (int tries = 0; tries < kTries && fastest >= kPause * 3; ++tries) {
        Type("a");
        Await(Prompt("/Filter Menu"));
        fastest = std::min(fastest, TimeToPrompt("d"));
        Type("x");
        Await(Prompt("/Phonebook Menu"));
    }
    EXPECT_GE(fastest, kPause * 2);
    EXPECT_LT(fastest, kPause * 3);
}

INSTANTIATE_TEST_SUITE_P(Menus, TransferMenuPause, testing::Values(kTransferMenu),
                         [](const auto& row) { return row.param.name; });
INSTANTIATE_TEST_SUITE_P(Menus, MenuPause, testing::ValuesIn(kMenus),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace morvane_test
