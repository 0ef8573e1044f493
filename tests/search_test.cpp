#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace morvane_test {
namespace {

const std::string kMenuPrompt = Prompt("/Phonebook Menu");
const std::string kFieldPrompt = ValuePrompt("/Select Search Field");
const std::string kFieldQuestion =
    Heading("Select Search Field") + Choices({"name", "number", "sound"}) + kFieldPrompt;
const std::string kValueQuestion =
    TextBox("Enter search value string") + ValuePrompt("/Search Value");
const std::string kInvalidField = Red("Invalid search field selected\n");
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n");
const std::string kResult = Heading("vCard Listing") + Lines({" 1.vcf\tAda"});

std::string FilterQuestion() {
    return Asking(PromptId::kListFilters);
}

class Search : public ConversationTest {
  protected:
    void OpenPhonebook(Wiring wiring = Wiring::kTerminal, Here here = Here::Now()) {
        Start(Wired(wiring), here);
        OpenSelectedSession(here);
        daemon().Reply("Search", Value("([('1.vcf', 'Ada')],)"));
    }

    void AskForField(Here here = Here::Now()) {
        Type("o", here);
        Expect(kFieldQuestion, here);
    }

    void AskForValue(const std::string& field = "0", Here here = Here::Now()) {
        AskForField(here);
        Type(field, here);
        Expect(kValueQuestion, here);
    }

    // What is sent when `typed` is the value.
    void ExpectSent(const std::string& typed, const std::string& sent, Here here = Here::Now()) {
        AskForValue("0", here);
        Type(typed, here);
        Expect(FilterQuestion(), here);
        Type("d", here);
        Expect(kResult + kMenuPrompt, here);
        ExpectCall("Search", "('name', '" + sent + "', @a{sv} {})", here);
    }

    void ExpectNothingSent() { EXPECT_EQ(CountCalls("Search"), 0U); }
};

TEST_F(Search, AsksForFieldValueAndFiltersInThisOrder) {
    OpenPhonebook();
    int field = 0;
    for (const std::string name : {"name", "number", "sound"}) {
        SCOPED_TRACE(name);
        AskForValue(std::to_string(field++));
        ExpectQuiet("/Search Value");
        Type("Ada");
        Expect(FilterQuestion());
        Type("m");
        Expect(Prompt("/Filter Menu"));
        Type("d");
        Expect(kResult + kMenuPrompt);
        ExpectCall("Search", "('" + name + "', 'Ada', {'ResetNewMissedCalls': <true>})");
    }
}

TEST_F(Search, RefusesOtherFieldsBeforeItAsksForTheValue) {
    OpenPhonebook();
    for (const std::string answer : {"3", "x", "x0", "-1", "4294967295", "4294967294"}) {
        SCOPED_TRACE(answer);
        AskForField();
        Type(answer);
        Expect(kInvalidField + kMenuPrompt);
    }
    ExpectNothingSent();
    EXPECT_EQ(CountCalls("ListFilterFields"), 0U);
}

TEST_F(Search, AsksAgainForAFieldThatIsNoNumber) {
    OpenPhonebook();
    AskForField();
    ExpectQuiet("/Select Search Field");
    for (const std::string answer : {"name", " x", "4294967296", "  "}) {
        SCOPED_TRACE(answer);
        Type(answer);
        Expect(Red("Invalid value\n") + kFieldPrompt);
    }
    Type("");
    Expect(kFieldPrompt);
    Type("0x2");  // decimal: a zero
    Expect(kValueQuestion);
    Type("Ada");
    Type("d");
    Await(kResult);
    ExpectCall("Search", "('name', 'Ada', @a{sv} {})");
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

TEST_F(Search, TakesALineOfAMegabyte) {
    OpenPhonebook(Wiring::kPipes);
    ExpectSent(std::string(1 << 20, 'a'), std::string(63, 'a'));
    AskForField();
    Type(std::string(1 << 20, '9'));
    Expect(Red("Invalid value\n") + kFieldPrompt);
    Type(std::string(1 << 20, ' ') + "1");
    Expect(kValueQuestion);
    Type("Ada");
    Expect(FilterQuestion());
    Type("d" + std::string(1 << 20, 'd'));
    Expect(kResult + kMenuPrompt);
    EXPECT_LT(console().CpuTime(), Stretched(std::chrono::seconds(5)));
}

TEST_F(Search, ReportsALostSessionBeforeAnInvalidField) {
    for (const std::string answer : {"3", "x", "1"}) {
        SCOPED_TRACE(answer);
        OpenPhonebook();
        AskForField();
        LoseConnection("/Select Search Field");
        Type(answer);
        Expect(kSessionLost + Prompt());
        Type("q");
        ExpectExit(0);
    }
    ExpectNothingSent();
}

TEST_F(Search, ReportsASessionLostAtTheValue) {
    OpenPhonebook();
    AskForValue();
    LoseConnection("/Search Value");
    Type("Ada");
    Expect(kSessionLost + Prompt());
    ExpectNothingSent();
    EXPECT_EQ(CountCalls("ListFilterFields"), 0U);
}

TEST_F(Search, SendsNothingWhenTheClientLeftAndCameBack) {
    OpenPhonebook();
    AskForValue();
    RemoveClient("/Search Value");
    ReturnClient("/Search Value");
    Type("Ada");
    Expect(kSessionLost + Prompt());
    ExpectNothingSent();
}

TEST_F(Search, EndOfInputAtTheFieldLeavesIt) {
    OpenPhonebook();
    AskForField();
    console().CloseInput();
    Expect(kInvalidField + kMenuPrompt);
    ExpectExit(0);
    ExpectNothingSent();
}

TEST_F(Search, EndOfInputAtTheValueIsAnEmptyText) {
    OpenPhonebook();
    AskForValue();
    console().CloseInput();
    Expect(FilterQuestion() + Red("Invalid Selection\n") + kMenuPrompt);
    ExpectExit(0);
    ExpectNothingSent();
}

}  // namespace
}  // namespace morvane_test
