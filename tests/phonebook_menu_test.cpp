#include "support/conversation_test.h"

#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kSessionInterface;

constexpr char kMenu[] = "/Phonebook Menu";
constexpr char kDevice[] = "/com/veltrisonix/hci0/dev_another";

const std::string kClientGone = Red("Client Proxy is invalid\n") + Prompt();
const std::string kPhonebookGone = Red("Phonebook Access Proxy is invalid\n") + Prompt();
const std::string kInvalidSelection = Red("Invalid Selection\n") + Prompt(kMenu);

using Keys = std::vector<std::string>;

class PhonebookMenuTest : public ConversationTest {
  protected:
    void TypeAll(const Keys& lines, Here here = Here::Now()) {
        for (const std::string& line : lines) Type(line, here);
    }

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
        Expect(MenuOf(PromptId::kPhonebookMenu) + Prompt(kMenu));
    }
}

TEST_F(PhonebookMenuTest, RefusesAllOtherKeys) {
    OpenSession();
    for (const char key : std::string("SAPLOGMNUFHXbcdeijkrtvwyz019?-+.")) {
        Type(std::string(1, key));
        Expect(kInvalidSelection);
    }
    Type(std::string(1, '\0'));
    Expect(kInvalidSelection);
    EXPECT_EQ(daemon().Calls().size(), 1U);
}

TEST_F(PhonebookMenuTest, AsksAgainSilentlyAfterAnEmptyLine) {
    OpenSession();
    for (const char* const line : {"", "   ", "\t"}) {
        Type(line);
        Expect(Prompt(kMenu));
    }
}

struct Operation {
    Keys keys;
    const char* method;
};

TEST_F(PhonebookMenuTest, EachKeyMakesItsOwnCallAndSurvivesItsRefusal) {
    OpenSelectedSession();
    const std::vector<Operation> operations = {{{"a", "d"}, "PullAll"},
                                               {{"p", "1A", "d"}, "Pull"},
                                               {{"l", "d"}, "List"},
                                               {{"o", "0", "value", "d"}, "Search"},
                                               {{"g"}, "GetSize"},
                                               {{"m", "d"}, "GetSizePhonebook"},
                                               {{"n", "d"}, "GetSizeListing"},
                                               {{"u"}, "UpdateVersion"},
                                               {{"f"}, "ListFilterFields"},
                                               {{"s", "0", "0"}, "Select"}};
    for (const Operation& operation : operations) {
        const std::string method = operation.method;
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", method + " fails: 5 %s");
        const std::size_t calls = CountCalls(method);
        TypeAll(operation.keys);
        Await(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: " + method +
                  " fails: 5 %s\n") +
              Prompt(kMenu));
        EXPECT_EQ(CountCalls(method), calls + 1) << method;
    }
}

TEST_F(PhonebookMenuTest, WithoutASelectionOnlyUpdateAndFieldsWork) {
    OpenSession();
    daemon().Reply("ListFilterFields", Value("(['N'],)"));
    for (const char* const key : {"a", "p", "l", "o", "g", "m", "n"}) {
        Type(key);
        Expect(Red("No Phonebook selected\n") + Prompt(kMenu));
    }
    Type("u");
    Expect(Normal("Counters updated\n") + Prompt(kMenu));
    Type("f");
    Expect(Heading("Filter Fields") + Lines({" N"}) + Prompt(kMenu));
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

TEST_F(PhonebookMenuTest, EndOfInputQuits) {
    OpenSession();
    console().CloseInput();
    ExpectExit(0);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

TEST_F(PhonebookMenuTest, AnUnterminatedKeyIsTheEndOfInput) {
    Start(Wired(Wiring::kPipes));
    OpenSession();
    console().TypeBytes("u");
    console().CloseInput();
    ExpectExit(0);
    EXPECT_EQ(CountCalls("UpdateVersion"), 0U);
}

TEST_F(PhonebookMenuTest, QuittingTheTransferMenuEndsAllMenus) {
    OpenSelectedSession();
    PullAll("BEGIN:VCARD");
    daemon().AbortTransfer(Transfer());
    Expect(Notice("/Transfer Menu", "Status Attribute Received: error\n"));
    Type("q");
    Expect(Normal("Removing: " + PulledPhonebook() + "\n"));
    ExpectExit(0);
}

TEST_F(PhonebookMenuTest, DropsTheKeyWhenTheClientGoesMeanwhile) {
    OpenSession();
    RemoveClient(kMenu);
    Type("u");
    Expect(kClientGone);
    EXPECT_EQ(CountCalls("UpdateVersion"), 0U);
    Type("h");
    Expect(Red("No Client available, start daemon.\n") + Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

// The new client has no session, and nothing may be asked of the old one.
TEST_F(PhonebookMenuTest, DropsTheKeyWhenTheClientIsReplacedMeanwhile) {
    OpenSession();
    RemoveClient(kMenu);
    ReturnClient(kMenu);
    Type("u");
    Expect(kClientGone);
    EXPECT_EQ(CountCalls("UpdateVersion"), 0U);
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
    OpenSession();
}

TEST_F(PhonebookMenuTest, EndsWithoutAPromptWhenTheSessionIsLostDuringACall) {
    OpenSession();
    daemon().Hang("UpdateVersion");
    Type("u");
    ExpectCall("UpdateVersion", "()");
    daemon().Notify(Session(), kSessionInterface, "ConnectionState", Value("byte 0"));
    AwaitMainThread();
    daemon().Release();
    Expect(Normal("Counters updated\n") + kClientGone);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

struct Question {
    Keys keys;
    std::string segment;
};

// Lost objects are the main menu's business, wherever they are noticed.
TEST_F(PhonebookMenuTest, LeavesLostSessionsToTheMainMenu) {
    Start();
    const std::vector<Question> questions = {
        {{"s"}, "/Select Location"},   {{"s", "0"}, "/Select Phonebook"},
        {{"p"}, "/vCard Handle"},      {{"o"}, "/Select Search Field"},
        {{"o", "0"}, "/Search Value"}, {{"a"}, "/Filter Menu"},
        {{"l"}, "/Filter Menu"},       {{"m"}, "/Filter Menu"},
        {{"l", "c"}, "/MaxCount"}};
    for (const Question& question : questions) {
        OpenSelectedSession();
        TypeAll(question.keys);
        Await(Green("Vantor" + question.segment));
        Await(kResetSequence);
        daemon().Notify(Session(), kSessionInterface, "ConnectionState", Value("byte 0"));
        ExpectQuiet(question.segment);
        const std::size_t calls = daemon().Calls().size();
        Type("0");
        Expect(kPhonebookGone);
        EXPECT_EQ(daemon().Calls().size(), calls + 1);  // RemoveSession
    }
    EXPECT_EQ(CountCalls("RemoveSession"), questions.size());
}

TEST_F(PhonebookMenuTest, KeepsTheRegistryLockedWhileItActsAndFreeWhileItAsks) {
    OpenSession();
    ExpectQuiet(kMenu);
    daemon().Hang("UpdateVersion");
    Type("u");
    ExpectCall("UpdateVersion", "()");
    AwaitMainThread();
    daemon().RemoveDevice(kDevice);
    daemon().Release();
    Expect(Normal("Counters updated\n"));
    Await(std::string("Removed ") + kDevice + "\n");
}

TEST_F(PhonebookMenuTest, DropsTheKeyAfterAnInterrupt) {
    OpenSession();
    Interrupt();
    Type("u");
    Expect(Red("Client Proxy is invalid\n"));
    ExpectExit(0);
    EXPECT_EQ(CountCalls("UpdateVersion"), 0U);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

}  // namespace
}  // namespace morvane_test
