#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kInvalidSelection = Red("Invalid Selection\n");

// A menu of the session.
struct Menu {
    std::string name;
    std::vector<std::string> opening;  // typed from the phone book menu's prompt on
    std::string segment;
    std::string lost;
};

const std::string kPhonebookGone = Red("Phonebook Access Proxy is invalid\n");

const Menu kMenus[] = {
    {"Phonebook", {}, "/Phonebook Menu", Red("Client Proxy is invalid\n")},
    {"PullAllFilters", {"a"}, "/Filter Menu", kPhonebookGone},
    {"PullFilters", {"p", "1"}, "/Filter Menu", kPhonebookGone},
    {"ListFilters", {"l"}, "/Filter Menu", kPhonebookGone},
    {"SizeFilters", {"m"}, "/Filter Menu", kPhonebookGone},
    {"Transfer", {"a", "d"}, "/Transfer Menu", kPhonebookGone},
};

class MenuPause : public ConversationTest, public testing::WithParamInterface<Menu> {
  protected:
    void OpenMenu(Here here = Here::Now()) {
        OpenSession(0, here);
        SelectPhonebook(0, 0, here);
        // Otherwise a transfer ends with its session, and says so at a moment of its own.
        daemon().Reply("RemoveSession", Value("()"));
        for (const std::string& line : GetParam().opening) Type(line, here);
        if (!GetParam().opening.empty()) Await(Prompt(GetParam().segment), here);
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
    constexpr int kTries = 10;
    for (int tries = 0; tries < kTries; ++tries) {
        OpenMenu();
        if (HearsOfALossInItsPause()) return Expect(MainMenu() + Prompt());
    }
    FAIL() << "the menu asked for a key " << kTries << " times";
}

INSTANTIATE_TEST_SUITE_P(Menus, MenuPause, testing::ValuesIn(kMenus),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace morvane_test
