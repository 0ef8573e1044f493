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

    // Expects this value in the call when `typed` is typed.
    void ExpectSent(const std::string& typed, const std::string& sent, Here here = Here::Now()) {
        for (const std::string& line : {std::string("o"), std::string("0"), typed})
            Type(line, here);
        Await(QuestionAndPrompt(PromptId::kSearchFilters), here);
        Enter("d", kResult + kPhonebookPrompt, here);
        ExpectCall("Search", "('name', '" + sent + "', @a{sv} {})", here);
    }
};

TEST_F(Search, AsksForFieldValueAndFiltersInThisOrder) {
    OpenPhonebook();
    int field = 0;
    for (const std::string& name : RowOf(PromptId::kSearchField).choices) {
        SCOPED_TRACE(name);
        Enter("o", QuestionAndPrompt(PromptId::kSearchField));
        Enter(std::to_string(field++), QuestionAndPrompt(PromptId::kSearchValue));
        Enter("Ada", QuestionAndPrompt(PromptId::kSearchFilters));
        Enter("m", Prompt(kFilterMenu));
        Enter("d", kResult + kPhonebookPrompt);
        ExpectCall("Search", "('" + name + "', 'Ada', {'ResetNewMissedCalls': <true>})");
    }
}

TEST_F(Search, SendsWholeUtf8CharactersOfUpTo63Bytes) {
    OpenPhonebook();
    for (const std::string text : {"", "x", "q", "  two  blanks\t", "100%s \xc3\xa4"})
        ExpectSent(text, text);
    const std::string most(63, 'a');
    const std::string less(61, 'a');
    ExpectSent(most, most);
    ExpectSent(most + "b", most);
    ExpectSent(less + "\xc3\xa4" + "e", less + "\xc3\xa4");
    ExpectSent(less + "a\xc3\xa4", less + "a");
    ExpectSent("c\xe2\x82", "c");
    ExpectSent("\x80" + less + "ab", "?" + less + "a");
}

}  // namespace
}  // namespace morvane_test
