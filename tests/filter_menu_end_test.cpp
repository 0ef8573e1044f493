#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kPhonebookPrompt = Prompt("/Phonebook Menu");
const std::string kFilterPrompt = Prompt("/Filter Menu");
const std::string kInvalidSelection = Red("Invalid Selection\n");
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n");
const std::string kRefused =
    Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: enough\n");
constexpr Duration kLittleWork(5000);  // processor time

// An operation and how its filter menu is reached.
struct Operation {
    std::string method;
    std::vector<std::string> opening;  // typed from the phone book menu's prompt on
    std::string (*menu)();
    std::string without_filters;  // the operation's arguments
};

const std::string kNoFilters = "(@a{sv} {},)";
const Operation kPull = {
    "Pull", {"p", "1"}, PullFilterMenu, "('1.vcf', '/tmp/card.vcf', @a{sv} {})"};
const Operation kOthers[] = {
    {"PullAll", {"a"}, PullAllFilterMenu, "('/tmp/phonebook.vcf', @a{sv} {})"},
    {"List", {"l"}, ListFilterMenu, kNoFilters},
    {"Search", {"o", "0", "Ada"}, ListFilterMenu, "('name', 'Ada', @a{sv} {})"},
    {"GetSizePhonebook", {"m"}, SizeFilterMenu, kNoFilters},
    {"GetSizeListing", {"n"}, SizeFilterMenu, kNoFilters}};

class FilterMenuEnds : public ConversationTest {
  protected:
    void OpenPhonebook(const std::string& method, const ConsoleOptions& options = {},
                       Here here = Here::Now()) {
        Start(options, here);
        OpenSelectedSession(here);
        daemon().Reply("ListFilterFields", Value("(['N', 'TEL'],)"));
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", "enough");
    }

    void OpenMenu(const std::vector<std::string>& opening, Here here = Here::Now()) {
        for (const std::string& line : opening) Type(line, here);
        Await(kFilterPrompt, here);
    }

    // The tool goes, in order, and has not made the call.
    void ExpectQuitWithout(const std::string& method, Here here = Here::Now()) {
        ExpectExit(0, Console::Rest::kNone, here);
        EXPECT_EQ(CountCalls(method), 0U);
        EXPECT_EQ(CountCalls("RemoveSession"), 1U);
    }
};

class FilterMenuEnd : public FilterMenuEnds, public testing::WithParamInterface<Operation> {
  protected:
    const std::string& Method() const { return GetParam().method; }

    void Open(const ConsoleOptions& options = {}, Here here = Here::Now()) {
        OpenPhonebook(Method(), options, here);
        OpenMenu(GetParam().opening, here);
    }
};

TEST_P(FilterMenuEnd, EndOfInputLeavesEverything) {
    Open();
    Type("m");
    Await(kFilterPrompt);
    console().CloseInput();
    Expect(kInvalidSelection + kPhonebookPrompt);
    ExpectQuitWithout(Method());
    EXPECT_LT(console().CpuTime(), Stretched(kLittleWork));
}

TEST_P(FilterMenuEnd, UnterminatedLastLineIsTheEndOfInput) {
    Open(Wired(Wiring::kPipes));
    console().TypeBytes("d");
    console().CloseInput();
    Expect(kInvalidSelection + kPhonebookPrompt);
    ExpectQuitWithout(Method());
}

TEST_P(FilterMenuEnd, ClosedWindowLeavesEverything) {
    Open(UnderNohup());
    console().HangUp();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(CountCalls(Method()), 0U);
    EXPECT_LT(console().CpuTime(), Stretched(kLittleWork));
}

TEST_P(FilterMenuEnd, TypedQuitIsNoKey) {
    Open();
    for (const std::string word : {"q", "Q", "quit", "x"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(kInvalidSelection + kFilterPrompt);
    }
    Type("d");
    Expect(kRefused + kPhonebookPrompt);
    ExpectCall(Method(), GetParam().without_filters);
}

TEST_P(FilterMenuEnd, RemovedClientEndsTheMenu) {
    Open();
    RemoveClient("/Filter Menu");
    Type("d");
    Expect(kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

TEST_P(FilterMenuEnd, ClientThatLeftAndCameBackEndsTheMenu) {
    Open();
    RemoveClient("/Filter Menu");
    ReturnClient("/Filter Menu");
    Type("d");
    Expect(kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
}

TEST_P(FilterMenuEnd, SessionLostBeforeTheFirstPromptEndsTheMenu) {
    OpenPhonebook(Method());
    daemon().Hang("ListFilterFields", 1);
    for (const std::string& line : GetParam().opening) Type(line);
    ExpectCall("ListFilterFields", "()");
    daemon().SetConnectionState(Session(), 0);
    daemon().Notify(Session(), simulator::kPhonebookInterface, "Folder", Value("'seen'"));
    Await(Normal("Folder: seen\n"));
    daemon().Release();
    Expect(GetParam().menu() + kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
}

TEST_P(FilterMenuEnd, EndOfInputInALostSessionSendsNothing) {
    Open();
    LoseConnection("/Filter Menu");
    console().CloseInput();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(CountCalls(Method()), 0U);
}

// The menu finds the tool stopped before it has asked anything, and what was chosen stands.
TEST_P(FilterMenuEnd, InterruptBeforeTheFirstPromptLeavesTheMenuAsIfDone) {
    OpenPhonebook(Method());
    daemon().Hang("ListFilterFields", 1);
    for (const std::string& line : GetParam().opening) Type(line);
    ExpectCall("ListFilterFields", "()");
    Interrupt();
    daemon().Release();
    Await(GetParam().menu());
    Expect(kRefused);
    ExpectExit(0);
    ExpectCall(Method(), GetParam().without_filters);
}

INSTANTIATE_TEST_SUITE_P(Pull, FilterMenuEnd, testing::Values(kPull),
                         [](const auto& row) { return row.param.method; });
INSTANTIATE_TEST_SUITE_P(Others, FilterMenuEnd, testing::ValuesIn(kOthers),
                         [](const auto& row) { return row.param.method; });

class LostInFilterMenu : public FilterMenuEnd {};

TEST_P(LostInFilterMenu, LostSessionEndsTheMenuAndIgnoresTheKey) {
    Open();
    LoseConnection("/Filter Menu");
    Type("d");
    Expect(kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

TEST_P(LostInFilterMenu, InterruptEndsTheMenuAtTheNextLine) {
    Open();
    Interrupt();
    Type("d");
    Expect(kSessionLost);
    ExpectQuitWithout(Method());
}

INSTANTIATE_TEST_SUITE_P(Others, LostInFilterMenu, testing::ValuesIn(kOthers),
                         [](const auto& row) { return row.param.method; });

// The menu in front of a pull of one card says nothing of a lost session: the call does.
class LostInPullMenu : public FilterMenuEnds {
  protected:
    void Open(Here here = Here::Now()) {
        OpenPhonebook("Pull", {}, here);
        OpenMenu({"p", "1", "f", "1"}, here);
        Await(kFilterPrompt, here);
    }
};

const std::string kPullArguments = "('1.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})";

TEST_F(LostInPullMenu, LostSessionIsLeftToTheCallAndTheKeyIsIgnored) {
    Open();
    LoseConnection("/Filter Menu");
    Type("a");
    Expect(kRefused + Red("Client Proxy is invalid\n") + Prompt());
    ExpectCall("Pull", kPullArguments);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

TEST_F(LostInPullMenu, PullThatIsAcceptedAllTheSameIsFollowed) {
    Open();
    daemon().SetPullContent("card");
    daemon().ClearFaults();
    LoseConnection("/Filter Menu");
    Type("Z");
    Await(kSessionLost);
    Await(Normal("Removing: " + PulledCard() + "\n"));
    ExpectCall("Pull", kPullArguments);
}

TEST_F(LostInPullMenu, InterruptIsLeftToTheCall) {
    Open();
    Interrupt();
    Type("a");
    Expect(kRefused);
    ExpectExit(0);
    ExpectCall("Pull", kPullArguments);
}

TEST_F(LostInPullMenu, CallToADaemonThatIsGoneIsReported) {
    Open();
    Interrupt();
    daemon().Crash();
    Type("d");
    // NoReply or ServiceUnknown, as the bus has noticed the loss only after the call or before.
    Await("Remote Call failed: GDBus.Error:org.freedesktop.DBus.Error.");
    ExpectExit(0, Console::Rest::kIgnored);
}

// A value prompt of one of the menus.
struct FilterValue {
    std::string name;
    std::string method;
    std::vector<std::string> opening;
    std::string key;
    std::string segment;
    std::string error;
};

const FilterValue kValues[] = {
    {"Format", "PullAll", {"a"}, "f", "/Select Format", "Invalid format selected\n"},
    {"FormatOfOneCard", "Pull", {"p", "1"}, "f", "/Select Format", "Invalid format selected\n"},
    {"Order", "List", {"l"}, "r", "/Select Order", "Invalid order selected\n"},
    {"MaxCount", "List", {"l"}, "c", "/MaxCount", "Invalid MaxCount entered\n"},
    {"Offset", "PullAll", {"a"}, "o", "/Offset", "Invalid Offset entered\n"},
    {"Field", "PullAll", {"a"}, "s", "/Select Filter Field", "Invalid filter selected\n"},
    {"FieldOfOneCard",
     "Pull",
     {"p", "1"},
     "s",
     "/Select Filter Field",
     "Invalid filter selected\n"},
    {"SelectorField",
     "GetSizePhonebook",
     {"m"},
     "k",
     "/Select Filter Field",
     "Invalid filter selected\n"},
    {"SelectorFilter",
     "GetSizeListing",
     {"n"},
     "l",
     "/Select vCard Selector Filter",
     "Invalid vCard selector selected\n"}};

class FilterPromptEnd : public FilterMenuEnds, public testing::WithParamInterface<FilterValue> {
  protected:
    const std::string& Method() const { return GetParam().method; }

    void Open(const ConsoleOptions& options = {}, Here here = Here::Now()) {
        OpenPhonebook(Method(), options, here);
        OpenMenu(GetParam().opening, here);
        Type(GetParam().key, here);
        Await(ValuePrompt(GetParam().segment), here);
    }

    void ExpectEndOfInput(Here here = Here::Now()) {
        Expect(Red(GetParam().error) + kFilterPrompt + kInvalidSelection + kPhonebookPrompt, here);
        ExpectQuitWithout(Method(), here);
    }
};

TEST_P(FilterPromptEnd, EndOfInputLeavesEverything) {
    Open();
    console().CloseInput();
    ExpectEndOfInput();
}

TEST_P(FilterPromptEnd, UnterminatedLastLineIsTheEndOfInput) {
    Open(Wired(Wiring::kPipes));
    console().TypeBytes("1");
    console().CloseInput();
    ExpectEndOfInput();
}

TEST_P(FilterPromptEnd, LostSessionIsReportedBeforeAnInvalidValue) {
    Open();
    LoseConnection(GetParam().segment);
    Type("x");
    Expect(kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
}

TEST_P(FilterPromptEnd, ClientThatLeftAndCameBackLeavesTheMenu) {
    Open();
    RemoveClient(GetParam().segment);
    ReturnClient(GetParam().segment);
    Type("1");
    Expect(kSessionLost + Prompt());
    EXPECT_EQ(CountCalls(Method()), 0U);
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

TEST_P(FilterPromptEnd, InterruptLeavesEverythingAtTheNextLine) {
    Open();
    Interrupt();
    Type("1");
    Expect(kSessionLost);
    ExpectQuitWithout(Method());
}

INSTANTIATE_TEST_SUITE_P(Values, FilterPromptEnd, testing::ValuesIn(kValues),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace morvane_test
