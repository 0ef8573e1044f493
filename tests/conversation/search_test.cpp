#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

const std::string kResult = OperationOf("Search").result;

class Search : public ConversationTest {
  protected:
    void OpenPhonebook(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().Reply("Search", Value(OperationOf("Search").reply));
    }

    void AskForValue(const std::string& field = "0", Here here = Here::Now()) {
        Type("o", here);
        Expect(Asking(PromptId::kSearchField), here);
        Type(field, here);
        Expect(Asking(PromptId::kSearchValue), here);
    }

    // What is sent when `typed` is the value.
    void ExpectSent(const std::string& typed, const std::string& sent, Here here = Here::Now()) {
        AskForValue("0", here);
        Type(typed, here);
        Expect(Asking(PromptId::kSearchFilters), here);
        Type("d", here);
        Expect(kResult + kPhonebookPrompt, here);
        ExpectCall("Search", "('name', '" + sent + "', @a{sv} {})", here);
    }
};

TEST_F(Search, AsksForFieldValueAndFiltersInThisOrder) {
    OpenPhonebook();
    int field = 0;
    for (const std::string name : {"name", "number", "sound"}) {
        SCOPED_TRACE(name);
        AskForValue(std::to_string(field++));
        Type("Ada");
        Expect(Asking(PromptId::kSearchFilters));
        Type("m");
        Expect(Prompt(kFilterMenu));
        Type("d");
        Expect(kResult + kPhonebookPrompt);
        ExpectCall("Search", "('" + name + "', 'Ada', {'ResetNewMissedCalls': <true>})");
    }
}

TEST_F(Search, TakesAnyTextAsValue) {
    OpenPhonebook();
    ExpectSent("", "");
    ExpectSent("x", "x");
    ExpectSent("q", "q");
    ExpectSent("  two  blanks\t", "  two  blanks\t");
    ExpectSent("100%s \xc3\xa4", "100%s \xc3\xa4");
}

TEST_F(Search, CutsTheValueAt63Bytes) {
    OpenPhonebook();
    ExpectSent(std::string(63, 'a'), std::string(63, 'a'));
    ExpectSent(std::string(63, 'b') + "c", std::string(63, 'b'));
    ExpectSent(std::string(61, 'd') + "\xc3\xa4" + "e", std::string(61, 'd') + "\xc3\xa4");
}

TEST_F(Search, SendsNoHalfCharacter) {
    OpenPhonebook();
    ExpectSent(std::string(62, 'a') + "\xc3\xa4", std::string(62, 'a'));
    ExpectSent(std::string(60, 'b') + "\xf0\x9f\x93\x9e", std::string(60, 'b'));
    ExpectSent("c\xe2\x82", "c");
}

TEST_F(Search, SendsAQuestionMarkForAByteThatIsNoText) {
    OpenPhonebook();
    ExpectSent("caf\xe9 au lait", "caf? au lait");
    ExpectSent("\xff\xfe", "??");
    ExpectSent("\x80" + std::string(62, 'a') + "b", "?" + std::string(62, 'a'));
}

}  // namespace
}  // namespace morvane_test
