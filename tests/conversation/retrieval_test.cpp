#include "support/conversation.h"

#include <filesystem>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kInvalidHandle =
    Red("Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n") +
    Prompt(kPhonebookMenu);
const std::string kInvalidUniqueId = Red("Invalid X-BT-UID entered\n") + Prompt(kPhonebookMenu);

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

    void AskForHandle(Here here = Here::Now()) { Answer("p", Asking(PromptId::kHandle), here); }

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
};

const std::string kPulled = Normal("Object Name: pulled\n") + Prompt(kTransferMenu);
const std::string kLeftTransfer = Red("Filename property not set!") + Prompt(kPhonebookMenu);

TEST_F(RetrievalTest, SendsTheChosenFiltersOfThisPullOnly) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("a");
    Answer("m", Prompt(kFilterMenu));
    Answer("d", kPulled);
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', {'ResetNewMissedCalls': <true>})");
    Answer("x", kLeftTransfer);

    AskForFilters("p");
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Answer("2", Red("Invalid format selected\n") + Prompt(kFilterMenu));
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Answer("1", Prompt(kFilterMenu));
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
    Await(Notice(kTransferMenu, "Status Attribute Received: complete\n"));
    Answer("d", Normal("Displaying: " + PulledPhonebook() + "\n") + Normal("whole book\n") +
                    Normal("\n") + Prompt(kTransferMenu));
    Answer("x", Normal("Removing: " + PulledPhonebook() + "\n") + Prompt(kPhonebookMenu));
    EXPECT_FALSE(std::filesystem::exists(PulledPhonebook()));

    Pull("1", "one card\n");
    daemon().CompleteTransfer(Transfer());
    Await(Notice(kTransferMenu, "Status Attribute Received: complete\n"));
    Answer("d", Normal("Displaying: " + PulledCard() + "\n") + Normal("one card\n") + Normal("\n") +
                    Prompt(kTransferMenu));
    Answer("x", Normal("Removing: " + PulledCard() + "\n") + Prompt(kPhonebookMenu));
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
                        Prompt(kPhonebookMenu));
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

// The pull's filter menu leaves quietly, whatever the key: the session's context is still there.
TEST_F(RetrievalTest, PullsOneCardEvenOverALostConnection) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("p");
    for (const char* const line : {"f", "1"}) Type(line);
    Await(Prompt(kFilterMenu));
    LoseConnection(kFilterMenu);
    Answer("?", Normal("Object Name: pulled\n") + Red("Phonebook Access Proxy is invalid\n") +
                    Red("Filename property not set!") + Prompt());
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})");
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
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

TEST_F(RetrievalTest, ReportsAPullAfterAnInterruptFromADaemonThatIsGone) {
    OpenSelected();
    AskForFilters("p");
    Interrupt();
    daemon().Crash();
    Type("d");
    // NoReply or ServiceUnknown: the bus learns of the loss after the call or before.
    Await("Remote Call failed: GDBus.Error:org.freedesktop.DBus.Error.");
    ExpectExit(0, Console::Rest::kIgnored);
}

}  // namespace
}  // namespace morvane_test
