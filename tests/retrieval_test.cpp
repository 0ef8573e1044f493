#include "support/conversation_test.h"

#include <filesystem>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

constexpr char kMenu[] = "/Phonebook Menu";
constexpr char kHandle[] = "/vCard Handle";
constexpr char kFilters[] = "/Filter Menu";
constexpr char kTransfers[] = "/Transfer Menu";

const std::string kInvalidHandle =
    Red("Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n") +
    Prompt(kMenu);
const std::string kInvalidUniqueId = Red("Invalid X-BT-UID entered\n") + Prompt(kMenu);
const std::string kNothingSelected = Red("No Phonebook selected\n") + Prompt(kMenu);
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n") + Prompt();

// The frame of a text's question has a title line, which is empty here.
std::string HandleQuestion() {
    return Heading("Enter handle of vCard to download") + TextBox("") + ValuePrompt(kHandle);
}

std::string UniqueId(std::size_t length) {
    return "X-BT-UID:" + std::string(length, 'e');
}

class RetrievalTest : public ConversationTest {
  protected:
    void OpenSelected(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().ForgetCalls();  // what counts begins here
    }

    void Answer(const std::string& answer, const std::string& result, Here here = Here::Now()) {
        Type(answer, here);
        Expect(result, here);
    }

    void AskForHandle(Here here = Here::Now()) { Answer("p", HandleQuestion(), here); }

    // From the phone book menu to the filter menu of the pull that `key` starts.
    void AskForFilters(const std::string& key, Here here = Here::Now()) {
        if (key == "a") return Answer("a", Asking(PromptId::kPullAllFilters), here);
        AskForHandle(here);
        Answer("1A", Asking(PromptId::kPullFilters), here);
    }

    // Replies that fix every byte; there is no object behind the transfer.
    void ReplyToPulls() {
        for (const char* const method : {"PullAll", "Pull"})
            daemon().Reply(method, Value("(objectpath '/transfer', {'Name': <'pulled'>})"));
    }

    void ReplaceClient(const std::string& segment, Here here = Here::Now()) {
        RemoveClient(segment, here);
        ReturnClient(segment, here);
    }

    std::size_t CountPulls() const { return CountCalls("PullAll") + CountCalls("Pull"); }
};

const std::string kPulled = Normal("Object Name: pulled\n") + Prompt(kTransfers);
const std::string kLeftTransfer = Red("Filename property not set!") + Prompt(kMenu);

TEST_F(RetrievalTest, PullsTheWholePhonebook) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("a");
    Answer("d", kPulled);
    ExpectCall("com.veltrisonix.obex.PhonebookAccess1.PullAll",
               "('/tmp/phonebook.vcf', @a{sv} {})");
    EXPECT_EQ(daemon().Calls().back().path, Session());
    Answer("h", MenuOf(PromptId::kTransfer) + Prompt(kTransfers));
    Answer("x", kLeftTransfer);
}

TEST_F(RetrievalTest, PullsOneCard) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("p");
    Answer("d", kPulled);
    ExpectCall("com.veltrisonix.obex.PhonebookAccess1.Pull",
               "('1A.vcf', '/tmp/card.vcf', @a{sv} {})");
    EXPECT_EQ(daemon().Calls().back().path, Session());
    Answer("h", MenuOf(PromptId::kTransfer) + Prompt(kTransfers));
    Answer("x", kLeftTransfer);
}

TEST_F(RetrievalTest, SendsTheChosenFiltersOfThisPullOnly) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("a");
    Answer("m", Prompt(kFilters));
    Answer("d", kPulled);
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', {'ResetNewMissedCalls': <true>})");
    Answer("x", kLeftTransfer);

    AskForFilters("p");
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Answer("2", Red("Invalid format selected\n") + Prompt(kFilters));
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Answer("1", Prompt(kFilters));
    Answer("d", kPulled);
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})");
    Answer("x", kLeftTransfer);

    AskForFilters("a");
    Answer("d", kPulled);
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
    EXPECT_EQ(CountCalls("ListFilterFields"), 1U);
}

TEST_F(RetrievalTest, FollowsTheTransferToItsFile) {
    OpenSelectedSession();
    PullAll("whole book\n");
    daemon().CompleteTransfer(Transfer());
    Await(Notice(kTransfers, "Status Attribute Received: complete\n"));
    Answer("d", Normal("Displaying: " + PulledPhonebook() + "\n") + Normal("whole book\n") +
                    Normal("\n") + Prompt(kTransfers));
    Answer("x", Normal("Removing: " + PulledPhonebook() + "\n") + Prompt(kMenu));
    EXPECT_FALSE(std::filesystem::exists(PulledPhonebook()));

    Pull("1", "one card\n");
    daemon().CompleteTransfer(Transfer());
    Await(Notice(kTransfers, "Status Attribute Received: complete\n"));
    Answer("d", Normal("Displaying: " + PulledCard() + "\n") + Normal("one card\n") + Normal("\n") +
                    Prompt(kTransfers));
    Answer("x", Normal("Removing: " + PulledCard() + "\n") + Prompt(kMenu));
    EXPECT_FALSE(std::filesystem::exists(PulledCard()));
}

TEST_F(RetrievalTest, SendsTheHandleAsItWasTyped) {
    OpenSelected();
    daemon().Refuse("Pull", "com.veltrisonix.Error.DoesNotExist", "No such card");
    const std::vector<std::pair<std::string, std::string>> handles = {
        {"1A", "'1A.vcf'"},
        {"0000001A", "'0000001A.vcf'"},
        {"  0x1f", "'  0x1f.vcf'"},
        {"-1", "'-1.vcf'"},
        {UniqueId(32), "'" + UniqueId(32) + "'"},
        {"X-BT-UID:it may hold blanks, dots or '%s'",
         "\"X-BT-UID:it may hold blanks, dots or '%s'\""},
        // What is no UTF-8 cannot be sent; the length stays.
        {"X-BT-UID:\xFFThirty-one more characters,\xC3\xA4\xE2\x82",
         "'X-BT-UID:?Thirty-one more characters,ä?\?'"}};
    for (const auto& [typed, sent] : handles) {
        AskForHandle();
        Answer(typed, Asking(PromptId::kPullFilters));
        Answer("d", Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.DoesNotExist: "
                        "No such card\n") +
                        Prompt(kMenu));
        ExpectCall("Pull", "(" + sent + ", '/tmp/card.vcf', @a{sv} {})");
    }
}

TEST_F(RetrievalTest, RefusesWhatNamesNoCard) {
    OpenSelected();
    for (const std::string handle : {"000000001", "1G", "", " ", "1A.vcf", "0x"}) {
        AskForHandle();
        Answer(handle, kInvalidHandle);
    }
    for (const std::string& handle : {"x-bt-uid:" + std::string(32, 'e'), std::string(42, '0')}) {
        AskForHandle();
        Answer(handle, kInvalidHandle);
    }
    EXPECT_EQ(daemon().Calls().size(), 0U);
}

// None is cut to one that would be valid.
TEST_F(RetrievalTest, RefusesUniqueIdsOfAnotherLength) {
    OpenSelected();
    for (const std::size_t length : {0U, 31U, 33U, 34U, 4000U}) {
        AskForHandle();
        Answer(UniqueId(length), kInvalidUniqueId);
    }
    EXPECT_EQ(daemon().Calls().size(), 0U);
}

TEST_F(RetrievalTest, StaysInThePhonebookMenuWhenThePullIsRefused) {
    OpenSelected();
    daemon().Refuse("PullAll", "com.veltrisonix.Error.Forbidden", "no");
    daemon().Refuse("Pull", "com.veltrisonix.Error.Failed", "not now");
    AskForFilters("a");
    Answer("d", Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Forbidden: no\n") +
                    Prompt(kMenu));
    AskForFilters("p");
    Answer("d", Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: not now\n") +
                    Prompt(kMenu));
}

TEST_F(RetrievalTest, RefusesRepliesOfAnotherType) {
    OpenSelected();
    daemon().Reply("PullAll", Value("(objectpath '/transfer',)"));
    daemon().Reply("Pull", Value("('/transfer', @a{sv} {})"));
    AskForFilters("a");
    Answer("d", Red("Remote Call failed: Method “PullAll” returned type “(o)”, "
                    "but expected “(oa{sv})”\n") +
                    Prompt(kMenu));
    AskForFilters("p");
    Answer("d", Red("Remote Call failed: Method “Pull” returned type “(sa{sv})”, "
                    "but expected “(oa{sv})”\n") +
                    Prompt(kMenu));
}

TEST_F(RetrievalTest, ShowsNoFilterMenuWhenTheFieldsAreRefused) {
    OpenSelected();
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "no fields");
    const std::string refused =
        Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: no fields\n") +
        Prompt(kMenu);
    Answer("a", refused);
    AskForHandle();
    Answer("1", refused);
    EXPECT_EQ(CountPulls(), 0U);
}

TEST_F(RetrievalTest, LooksForTheSessionBeforeItJudgesTheHandle) {
    OpenSelected();
    AskForHandle();
    LoseConnection(kHandle);
    Answer("1G", kSessionLost);
    EXPECT_EQ(CountPulls(), 0U);
}

TEST_F(RetrievalTest, EndsWhenTheClientIsReplacedBeforeTheHandle) {
    OpenSelected();
    AskForHandle();
    ReplaceClient(kHandle);
    Answer("1", kSessionLost);
    EXPECT_EQ(daemon().Calls().size(), 0U);
}

TEST_F(RetrievalTest, LeavesTheRegistryFreeWhileItAsks) {
    OpenSelected();
    AskForHandle();
    ExpectQuiet(kHandle);
    Answer("1", Asking(PromptId::kPullFilters));
    ExpectQuiet(kFilters);
}

TEST_F(RetrievalTest, KeepsTheRegistryLockedWhileItPulls) {
    const std::string device = "/com/veltrisonix/hci0/dev_2";
    OpenSelected();
    daemon().SetPullContent("vcard");
    for (const auto& [key, method] : {std::pair{"a", "PullAll"}, {"p", "Pull"}}) {
        AskForFilters(key);
        AddDevice(device, "00:00:00:00:00:02", "second", kFilters);
        daemon().Hang(method);
        Type("d");
        ASSERT_TRUE(daemon().AwaitCall(method, Patience()));
        ExpectRemovalAfterTheCall(device);
        Await(Red(" > "));
        ExpectQuiet(kTransfers);
        Type("x");
        Await(Prompt(kMenu));
    }
}

TEST_F(RetrievalTest, SendsNothingWhenTheSessionIsLostBeforeAPullOfAll) {
    OpenSelected();
    AskForFilters("a");
    LoseConnection(kFilters);
    Answer("d", kSessionLost);

    OpenSelectedSession();
    AskForFilters("a");
    ReplaceClient(kFilters);
    Answer("d", kSessionLost);
    EXPECT_EQ(CountPulls(), 0U);
}

// The pull's filter menu leaves quietly, whatever the key: the session's context is still there.
TEST_F(RetrievalTest, PullsOneCardEvenOverALostConnection) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("p");
    LoseConnection(kFilters);
    Answer("?", Normal("Object Name: pulled\n") + Red("Phonebook Access Proxy is invalid\n") +
                    Red("Filename property not set!") + Prompt());
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', @a{sv} {})");
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(RetrievalTest, PullsNothingForAClientThatIsGone) {
    OpenSelected();
    AskForFilters("p");
    ReplaceClient(kFilters);
    Answer("d", kSessionLost);

    OpenSelectedSession();
    AskForFilters("p");
    RemoveClient(kFilters);
    Answer("d", kSessionLost);
    EXPECT_EQ(CountPulls(), 0U);
}

TEST_F(RetrievalTest, PullsOneCardAfterAnInterruptAndEnds) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("p");
    Interrupt();
    Type("d");
    Expect(Normal("Object Name: pulled\n") + Red("Filename property not set!"));
    ExpectExit(0);
    EXPECT_EQ(CountCalls("Pull"), 1U);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

TEST_F(RetrievalTest, EndOfInputPullsNothing) {
    for (const char* const key : {"a", "p"}) {
        Start();
        OpenSelected();
        AskForFilters(key);
        console().CloseInput();
        Expect(Red("Invalid Selection\n") + Prompt(kMenu));
        ExpectExit(0);
        EXPECT_EQ(CountPulls(), 0U);
    }
}

TEST_F(RetrievalTest, EndOfInputIsNoHandle) {
    OpenSelected();
    AskForHandle();
    console().CloseInput();
    Expect(kInvalidHandle);
    ExpectExit(0);
}

// Unlike keys and numbers, a text needs no end of line.
TEST_F(RetrievalTest, TakesAnUnterminatedHandle) {
    Start(Wired(Wiring::kPipes));
    OpenSelected();
    AskForHandle();
    console().TypeBytes("1A");
    console().CloseInput();
    Expect(Asking(PromptId::kPullFilters) + Red("Invalid Selection\n") + Prompt(kMenu));
    ExpectExit(0);
    EXPECT_EQ(CountPulls(), 0U);
}

}  // namespace
}  // namespace morvane_test
