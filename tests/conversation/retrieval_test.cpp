#include "support/conversation.h"

#include <string>
#include <utility>

namespace morvane_test {
namespace {

const std::string kInvalidHandle =
    "Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n";
const std::string kInvalidUniqueId = "Invalid X-BT-UID entered\n";

class RetrievalTest : public ConversationTest {
  protected:
    void OpenSelected(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().ForgetCalls();  // count only later calls
    }

    void Answer(const std::string& answer, const std::string& result, Here here = Here::Now()) {
        Type(answer, here);
        Expect(result, here);
    }

    // Opens the filter menu of the pull with this key.
    void AskForFilters(const std::string& key, Here here = Here::Now()) {
        if (key == "a") return Answer("a", QuestionAndPrompt(PromptId::kPullAllFilters), here);
        Answer("p", QuestionAndPrompt(PromptId::kHandle), here);
        Answer("1A", QuestionAndPrompt(PromptId::kPullFilters), here);
    }

    // Fixed replies, so that the output is known; the transfer has no object.
    void ReplyToPulls() {
        for (const char* const method : {"PullAll", "Pull"})
            daemon().Reply(method, Value("(objectpath '/transfer', {'Name': <'pulled'>})"));
    }
};

const std::string kPulled = Normal("Object Name: pulled\n") + Prompt(kTransferMenu);
const std::string kLeftTransfer = Red("Filename property not set!") + kPhonebookPrompt;

TEST_F(RetrievalTest, SendsFiltersOfThisPullOnly) {
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

TEST_F(RetrievalTest, SendsHandleUnchanged) {
    OpenSelected();
    daemon().Refuse("Pull", "com.veltrisonix.Error.Failed", "enough");
    const std::pair<const char*, const char*> handles[] = {
        {"  0x1f", "'  0x1f.vcf'"},
        {"X-BT-UID:it may hold blanks, dots or '%s'",
         "\"X-BT-UID:it may hold blanks, dots or '%s'\""},
        // Invalid UTF-8 is replaced and the length does not change.
        {"X-BT-UID:\xFFThirty-one more characters,\xC3\xA4\xE2\x82",
         "'X-BT-UID:?Thirty-one more characters,ä?\?'"}};
    for (const auto& [typed, sent] : handles) {
        Answer("p", QuestionAndPrompt(PromptId::kHandle));
        Answer(typed, QuestionAndPrompt(PromptId::kPullFilters));
        Answer("d", kRefused + kPhonebookPrompt);
        ExpectCall("Pull", std::string("(") + sent + ", '/tmp/card.vcf', @a{sv} {})");
    }
}

// A long answer must not be truncated to a valid one.
TEST_F(RetrievalTest, RejectsInvalidHandles) {
    OpenSelected();
    const auto expect_error = [this](const std::string& handle, const std::string& error) {
        Answer("p", QuestionAndPrompt(PromptId::kHandle));
        Answer(handle, Red(error) + kPhonebookPrompt);
    };
    for (const std::string& handle :
         {std::string("000000001"), std::string(" "), std::string("1A.vcf"), std::string(42, '0')})
        expect_error(handle, kInvalidHandle);
    for (const std::size_t length : {0U, 31U, 33U, 34U, 4000U})
        expect_error("X-BT-UID:" + std::string(length, 'e'), kInvalidUniqueId);
    EXPECT_TRUE(daemon().Calls().empty());
}

// The filter menu of this pull exits without a message on any key: it does not check the
// connection.
TEST_F(RetrievalTest, PullIsSentAfterLossOfConnection) {
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

TEST_F(RetrievalTest, PullIsSentAfterInterruptBeforeExit) {
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

}  // namespace
}  // namespace morvane_test
