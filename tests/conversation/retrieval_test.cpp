#include "support/conversation.h"

#include <string>
#include <utility>

namespace morvane_test {
namespace {

class RetrievalTest : public ConversationTest {
  protected:
    void OpenSelected(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().ForgetCalls();  // count only later calls
    }

    // Opens the filter menu of a pull with a fixed reply, whose transfer has no object.
    void OpenPullFilters(Here here = Here::Now()) {
        OpenSelected(here);
        daemon().Reply("Pull", Value("(objectpath '/transfer', {'Name': <'pulled'>})"));
        Enter("p", QuestionAndPrompt(PromptId::kHandle), here);
        Enter("1A", QuestionAndPrompt(PromptId::kPullFilters), here);
    }
};

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
    const std::string invalid_handle =
        "Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n";
    for (const std::size_t length : {0U, 33U, 34U, 4000U}) {
        const std::string handle = length == 0 ? "1A.vcf" : "X-BT-UID:" + std::string(length, 'e');
        Enter("p", QuestionAndPrompt(PromptId::kHandle));
        Enter(handle,
              Red(length == 0 ? invalid_handle : "Invalid X-BT-UID entered\n") + kPhonebookPrompt);
    }
    EXPECT_TRUE(daemon().Calls().empty());
}

// The filter menu of this pull exits without a message on any key: it does not check the
// connection.
TEST_F(RetrievalTest, PullIsSentAfterLossOfConnection) {
    OpenPullFilters();
    for (const char* const line : {"f", "1"}) Type(line);
    Await(Prompt(kFilterMenu));
    LoseConnection(kFilterMenu);
    Enter("?", Normal("Object Name: pulled\n") + Red("Phonebook Access Proxy is invalid\n") +
                   Red("Filename property not set!") + Prompt());
    ExpectCall("Pull", "('1A.vcf', '/tmp/card.vcf', {'Format': <'vcard30'>})");
    ExpectCall("RemoveSession", "(objectpath '/com/veltrisonix/obex/client/session0',)");
}

TEST_F(RetrievalTest, PullIsSentAfterInterruptBeforeExit) {
    OpenPullFilters();
    Interrupt();
    Enter("d", Normal("Object Name: pulled\n") + Red("Filename property not set!"));
    ExpectExit(0);
    EXPECT_EQ(CountCalls("Pull"), 1U);
    EXPECT_EQ(CountCalls("RemoveSession"), 1U);
}

}  // namespace
}  // namespace morvane_test
