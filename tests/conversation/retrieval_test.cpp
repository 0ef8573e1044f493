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

    // Opens the filter menu of the pull with this key.
    void AskForFilters(const std::string& key, Here here = Here::Now()) {
        if (key == "a") return Enter("a", QuestionAndPrompt(PromptId::kPullAllFilters), here);
        Enter("p", QuestionAndPrompt(PromptId::kHandle), here);
        Enter("1A", QuestionAndPrompt(PromptId::kPullFilters), here);
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
    Enter("m", Prompt(kFilterMenu));
    Enter("d", kPulled);
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', {'ResetNewMissedCalls': <true>})");
    Enter("x", kLeftTransfer);

    AskForFilters("p");
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Enter("2", Red("Invalid format selected\n") + Prompt(kFilterMenu));
    Type("f");
    Await(ValuePrompt("/Select Format"));
    Enter("1", Prompt(kFilterMenu));
    Enter("d", kPulled);
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})");
    Enter("x", kLeftTransfer);

    AskForFilters("a");
    Enter("d", kPulled);
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
        Enter("p", QuestionAndPrompt(PromptId::kHandle));
        Enter(typed, QuestionAndPrompt(PromptId::kPullFilters));
        Enter("d", kRefused + kPhonebookPrompt);
        ExpectCall("Pull", std::string("(") + sent + ", '/tmp/card.vcf', @a{sv} {})");
    }
}

// A long answer must not be truncated to a valid one.
TEST_F(RetrievalTest, RejectsInvalidHandles) {
    OpenSelected();
    const auto expect_error = [this](const std::string& handle, const std::string& error) {
        Enter("p", QuestionAndPrompt(PromptId::kHandle));
        Enter(handle, Red(error) + kPhonebookPrompt);
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
    Enter("?", Normal("Object Name: pulled\n") + Red("Phonebook Access Proxy is invalid\n") +
                   Red("Filename property not set!") + Prompt());
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})");
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(RetrievalTest, PullIsSentAfterInterruptBeforeExit) {
    OpenSelected();
    ReplyToPulls();
    AskForFilters("p");
    Interrupt();
    Enter("d", Normal("Object Name: pulled\n") + Red("Filename property not set!"));
    ExpectExit(0);
    EXPECT_EQ(CountCalls("Pull"), 1U);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

}  // namespace
}  // namespace morvane_test
