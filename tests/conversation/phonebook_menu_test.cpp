#include "support/conversation.h"

#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kSessionInterface;

constexpr char kDevice[] = "/com/veltrisonix/hci0/dev_another";

class PhonebookMenuTest : public ConversationTest {
  protected:
    // With the menu thread in a call: all that the daemon has announced so far has been handled.
    void AwaitMainThread(Here here = Here::Now()) {
        daemon().AddDevice(kDevice, "00:00:00:00:00:01", "another");
        Expect(Normal(std::string("Found Device ") + kDevice + "\n"), here);
    }
};

TEST_F(PhonebookMenuTest, IsShownOnlyWhenAskedFor) {
    OpenSession();
    for (const char* const line : {"h", "help", "  \thx"}) {
        Type(line);
        Expect(MenuOf(PromptId::kPhonebookMenu) + Prompt(kPhonebookMenu));
    }
}

TEST_F(PhonebookMenuTest, RefusesAllOtherKeys) {
    OpenSession();
    for (const char key : std::string("SAPLOGMNUFHXbcdeijkrtvwyz019?-+.")) {
        Type(std::string(1, key));
        Expect(kInvalidSelection + kPhonebookPrompt);
    }
    Type(std::string(1, '\0'));
    Expect(kInvalidSelection + kPhonebookPrompt);
    EXPECT_EQ(daemon().Calls().size(), 1U);
}

TEST_F(PhonebookMenuTest, AsksAgainSilentlyAfterAnEmptyLine) {
    OpenSession();
    for (const char* const line : {"", "   ", "\t"}) {
        Type(line);
        Expect(Prompt(kPhonebookMenu));
    }
}

TEST_F(PhonebookMenuTest, WithoutASelectionOnlyUpdateAndFieldsWork) {
    OpenSession();
    daemon().Reply("ListFilterFields", Value("(['N'],)"));
    for (const KeyRow& row : KeysOf(PromptId::kPhonebookMenu)) {
        if (!row.needs_selection) continue;
        Type({&row.key, 1});
        Expect(Red("No Phonebook selected\n") + Prompt(kPhonebookMenu));
    }
    Type("u");
    Expect(Normal("Counters updated\n") + Prompt(kPhonebookMenu));
    Type("f");
    Expect(Heading("Filter Fields") + Lines({" N"}) + Prompt(kPhonebookMenu));
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

class QuitTest : public PhonebookMenuTest, public testing::WithParamInterface<const char*> {};

TEST_P(QuitTest, ClosesTheSessionAndEndsTheProgram) {
    OpenSession();
    Type(GetParam());
    ExpectExit(0);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

INSTANTIATE_TEST_SUITE_P(PhonebookMenu, QuitTest, testing::Values("q", "Q", "quit", "  Quit"));

TEST_F(PhonebookMenuTest, QuittingTheTransferMenuEndsAllMenus) {
    OpenSelectedSession();
    PullAll("BEGIN:VCARD");
    daemon().AbortTransfer(Transfer());
    Expect(Notice(kTransferMenu, "Status Attribute Received: error\n"));
    Type("q");
    Expect(Normal("Removing: " + PulledPhonebook() + "\n"));
    ExpectExit(0);
}

TEST_F(PhonebookMenuTest, EndsWithoutAPromptWhenTheSessionIsLostDuringACall) {
    OpenSession();
    daemon().Hang("UpdateVersion");
    Type("u");
    ExpectCall("UpdateVersion", "()");
    daemon().Notify(Session(), kSessionInterface, "ConnectionState", Value("byte 0"));
    AwaitMainThread();
    daemon().Release();
    Expect(Normal("Counters updated\n") + kClientGone + Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

}  // namespace
}  // namespace morvane_test
