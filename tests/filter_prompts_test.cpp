#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kPhonebookPrompt = Prompt("/Phonebook Menu");
const std::string kFilterPrompt = Prompt("/Filter Menu");

// A prompt for a filter's value, as one of the filter menus opens it.
struct FilterValue {
    std::string name;
    std::vector<std::string> opening;  // of the menu, from the phone book menu's prompt on
    std::string key;
    std::string segment;
    std::string title;
    std::vector<std::string> choices;
    std::string error;
    std::vector<std::string> refused;  // answers besides those that no prompt takes
};

const std::vector<std::string> kFields = {"VERSION", "FN",  "N",     "PHOTO",  "BDAY", "ADR",
                                          "LABEL",   "TEL", "EMAIL", "MAILER", "100%s"};

const FilterValue kValues[] = {
    {"Format",
     {"a"},
     "f",
     "/Select Format",
     "Select a Phonebook Format",
     {"vcard21", "vcard30"},
     "Invalid format selected",
     {"2", "4294967294"}},
    {"FormatOfOneCard",
     {"p", "1"},
     "f",
     "/Select Format",
     "Select a Phonebook Format",
     {"vcard21", "vcard30"},
     "Invalid format selected",
     {"2"}},
    {"Order",
     {"l"},
     "r",
     "/Select Order",
     "Select a Phonebook Sort Order",
     {"indexed", "alphanumeric", "phonetic"},
     "Invalid order selected",
     {"3", "4294967294"}},
    {"MaxCount",
     {"l"},
     "c",
     "/MaxCount",
     "Enter number of Phonebook Entries to return",
     {},
     "Invalid MaxCount entered",
     {"0", "0x10", "65536", "65537", "4294901761", "4294967294"}},
    {"Offset",
     {"l"},
     "o",
     "/Offset",
     "Enter the Phonebook List Start Offset",
     {},
     "Invalid Offset entered",
     {"65536", "65537", "4294901760", "4294967294"}},
    {"Field",
     {"a"},
     "s",
     "/Select Filter Field",
     "Select a Filter Field",
     kFields,
     "Invalid filter selected",
     {"11", "4294967294"}},
    {"FieldOfOneCard",
     {"p", "1"},
     "s",
     "/Select Filter Field",
     "Select a Filter Field",
     kFields,
     "Invalid filter selected",
     {"11"}},
    {"SelectorField",
     {"m"},
     "k",
     "/Select Filter Field",
     "Select a Filter Field",
     kFields,
     "Invalid filter selected",
     {"11", "4294967294"}},
    {"SelectorFilter",
     {"n"},
     "l",
     "/Select vCard Selector Filter",
     "Select a vCard Selector Filter",
     {"FilterAll", "FilterAny"},
     "Invalid vCard selector selected",
     {"2", "4294967294"}},
};

// "(['A', 'B'],)"
std::string FieldsReply(const std::vector<std::string>& fields) {
    std::string reply = "(@as [";
    for (const std::string& field : fields)
        reply += (reply.back() == '[' ? "'" : ", '") + field + "'";
    return reply + "],)";
}

class FilterPrompts : public ConversationTest {
  protected:
    void OpenMenu(const std::vector<std::string>& opening,
                  const std::vector<std::string>& fields = kFields,
                  Wiring wiring = Wiring::kTerminal, Here here = Here::Now()) {
        Start(Wired(wiring), here);
        OpenSelectedSession(here);
        daemon().Reply("ListFilterFields", Value(FieldsReply(fields)));
        for (const std::string& line : opening) Type(line, here);
        Await(kFilterPrompt, here);
    }
};

class FilterPrompt : public FilterPrompts, public testing::WithParamInterface<FilterValue> {
  protected:
    std::string Question() const {
        return Heading(GetParam().title) + Choices(GetParam().choices) + Marker();
    }
    std::string Marker() const { return ValuePrompt(GetParam().segment); }
    std::string Error() const { return Red(GetParam().error + "\n") + kFilterPrompt; }

    void OpenPrompt(Here here = Here::Now()) {
        OpenMenu(GetParam().opening, kFields, Wiring::kTerminal, here);
        Type(GetParam().key, here);
        Expect(Question(), here);
    }

    // The prompt stands. It is left with the error, which does not end the menu, and opened again.
    void ExpectRefusal(const std::string& answer, Here here = Here::Now()) {
        Type(answer, here);
        Expect(Error(), here);
        Type(GetParam().key, here);
        Expect(Question(), here);
    }
};

TEST_P(FilterPrompt, RefusesWhatIsOutOfRange) {
    OpenPrompt();
    for (const std::string& answer : GetParam().refused) {
        SCOPED_TRACE(answer);
        ExpectRefusal(answer);
    }
}

TEST_P(FilterPrompt, RefusesWhatMeansLeaving) {
    OpenPrompt();
    for (const std::string answer : {"x", "x0", "xyz", "4294967295", "-1"}) {
        SCOPED_TRACE(answer);
        ExpectRefusal(answer);
    }
}

TEST_P(FilterPrompt, AsksAgainForWhatIsNoNumber) {
    OpenPrompt();
    for (const std::string answer : {"one", " x", "X", "4294967296", "-", "  ", "\t", ".5"}) {
        SCOPED_TRACE(answer);
        Type(answer);
        Expect(Red("Invalid value\n") + Marker());
    }
    Type("");
    Expect(Marker());
    Type("1");
    Expect(kFilterPrompt);
}

TEST_P(FilterPrompt, ShowsWhatHappensMeanwhile) {
    OpenPrompt();
    ExpectQuiet(GetParam().segment);
    Type("");
    Expect(Marker());
    ExpectQuiet(GetParam().segment);
    Type("1 and more");
    Expect(kFilterPrompt);
    ExpectQuiet("/Filter Menu");
}

INSTANTIATE_TEST_SUITE_P(Values, FilterPrompt, testing::ValuesIn(kValues),
                         [](const auto& row) { return row.param.name; });

// What a number prompt makes of a line, in the filter menu of listings.
struct NumberRow {
    std::string typed;
    std::string count;  // empty: refused
    std::string offset;
};

using SentNumber = std::string NumberRow::*;

const NumberRow kNumbers[] = {
    {"0", "", "0"},        {"1", "1", "1"},           {"65535", "65535", "65535"},
    {"0x10", "", "0"},     {" 7", "7", "7"},          {"+8", "8", "8"},
    {"12abc", "12", "12"}, {"010", "10", "10"},       {"0000065535", "65535", "65535"},
    {"1e3", "1", "1"},     {"-4294967295", "1", "1"}, {"65534.9", "65534", "65534"},
};

class FilterNumber : public FilterPrompts {
  protected:
    // Opens the menu again, types the number, and compares what is sent.
    void ExpectSent(const std::string& key, const std::string& typed, const std::string& filters,
                    Here here = Here::Now()) {
        Type("l", here);
        Await(kFilterPrompt, here);
        for (const std::string& line : {key, typed, std::string("d")}) Type(line, here);
        Await(Heading("vCard Listing") + kPhonebookPrompt, here);
        ExpectCall("List", "(" + filters + ",)", here);
    }

    void ExpectEach(const std::string& key, const std::string& name, SentNumber sent) {
        OpenMenu({"l"}, {});
        daemon().Reply("List", Value("(@a(ss) [],)"));
        Type("d");
        Await(kPhonebookPrompt);
        ExpectCall("List", "(@a{sv} {},)");
        for (const NumberRow& row : kNumbers) {
            SCOPED_TRACE(row.typed);
            const std::string& number = row.*sent;
            ExpectSent(key, row.typed,
                       number.empty() ? "@a{sv} {}" : "{'" + name + "': <uint16 " + number + ">}");
        }
    }
};

TEST_F(FilterNumber, MaxCountIsBetween1And65535) {
    ExpectEach("c", "MaxCount", &NumberRow::count);
}

TEST_F(FilterNumber, OffsetIsBetween0And65535) {
    ExpectEach("o", "Offset", &NumberRow::offset);
}

TEST_F(FilterPrompts, TakeALineOfAMegabyte) {
    OpenMenu({"l"}, kFields, Wiring::kPipes);
    Type("c");
    Await(ValuePrompt("/MaxCount"));
    Type(std::string(1 << 20, '9'));
    Expect(Red("Invalid value\n") + ValuePrompt("/MaxCount"));
    Type(std::string(1 << 20, '0') + "7");
    Expect(kFilterPrompt);
    Type("d");
    ExpectCall("List", "({'MaxCount': <uint16 7>},)");
    EXPECT_LT(console().CpuTime(), Stretched(std::chrono::seconds(5)));
}

TEST_F(FilterPrompts, WithoutFieldsEveryFieldIsRefused) {
    OpenMenu({"a"}, {});
    const std::string question =
        Heading("Select a Filter Field") + ValuePrompt("/Select Filter Field");
    for (const std::string key : {"s", "k"}) {
        for (const std::string answer : {"0", "1", "x", "4294967295"}) {
            SCOPED_TRACE(key + answer);
            Type(key);
            Expect(question);
            Type(answer);
            Expect(Red("Invalid filter selected\n") + kFilterPrompt);
        }
    }
    Type("d");
    ExpectCall("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
}

TEST_F(FilterPrompts, OfferEachFieldByItsNumber) {
    OpenMenu({"m"});
    for (std::size_t field = 0; field < kFields.size(); ++field) {
        Type("k");
        Type(std::to_string(field));
    }
    for (const std::string line : {"l", "1", "d"}) Type(line);
    const std::string all = FieldsReply(kFields);
    ExpectCall("GetSizePhonebook", "({'FilterAny': <" + all.substr(1, all.size() - 3) + ">},)");
}

}  // namespace
}  // namespace morvane_test
