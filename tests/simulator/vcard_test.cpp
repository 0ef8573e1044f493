#include "simulator/vcard_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace simulator {
namespace {

using std::string;

std::vector<string> LinesOf(const string& text) {
    std::vector<string> lines;
    std::istringstream stream(text);
    for (string line; std::getline(stream, line);) {
        EXPECT_EQ(line.back(), '\r') << line;
        line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

FieldSet Fields(std::initializer_list<Field> fields) {
    FieldSet set;
    for (const Field field : fields) {
        set.set(static_cast<std::size_t>(field));
    }
    return set;
}

Card PlainCard() {
    return {{{Field::kN, {}, {"Doe", "Ann"}},
             {Field::kFn, {}, {"Ann Doe"}},
             {Field::kTel, {"CELL"}, {"+120255500"}},
             {Field::kTel, {"HOME"}, {"+120255501"}},
             {Field::kNote, {}, {"a;b,c\\d\ne"}}}};
}

TEST(FoldLine, BreaksLinesOf75BytesBetweenCharacters) {
    const string x73(73, 'x');
    const std::pair<string, string> rows[] = {
        {x73 + "yz", x73 + "yz"},
        {x73 + "xxx", x73 + "xx\r\n x"},
        {string(75 + 74 + 1, 'x'), x73 + "xx\r\n " + x73 + "x\r\n x"},
        {x73 + "xé", x73 + "x\r\n é"},
        {x73 + "美y", x73 + "\r\n 美y"},
    };
    for (const auto& [line, folded] : rows) EXPECT_EQ(FoldLine(line), folded);
}

TEST(FoldLine, LosesNothing) {
    string line;
    for (int i = 0; i < 100; ++i) {
        line += "aé美\xF0\x9F\x93\x9E";
    }
    string unfolded = FoldLine(line);
    for (std::size_t at; (at = unfolded.find("\r\n ")) != string::npos;) {
        unfolded.erase(at, 3);
    }
    EXPECT_EQ(unfolded, line);
}

TEST(QuotedPrintable, QuotesWhatIsNotPlainAsciiInLinesOf76Characters) {
    const string x73(73, 'x');
    EXPECT_EQ(QuotedPrintable("a=é\r\n", 0), "a=3D=C3=A9=0D=0A");
    EXPECT_EQ(QuotedPrintable("a b ", 0), "a b=20");
    EXPECT_EQ(QuotedPrintable(x73 + "xxx", 0), x73 + "xxx");
    EXPECT_EQ(QuotedPrintable(x73 + "xxxx", 0), x73 + "xx=\r\nxx");
    EXPECT_EQ(QuotedPrintable(x73 + "éy", 0), x73 + "=\r\n=C3=A9y");
    EXPECT_EQ(QuotedPrintable("abcd", 74), "a=\r\nbcd");
}

TEST(Escape, EscapesSeparatorsOfEachVersion) {
    EXPECT_EQ(EscapeVcard30({"a;b,c\\d\ne", "f"}), "a\\;b\\,c\\\\d\\ne;f");
    EXPECT_EQ(EscapeVcard21({"a;b,c\\d", "e"}), "a\\;b,c\\d;e");
    EXPECT_EQ(EscapeVcard21({"a;b,c"}), "a;b,c");
}

TEST(WriteVcard, HasTheFormOfItsVersion) {
    EXPECT_EQ(WriteVcard(PlainCard(), VcardFormat::kVcard21),
              "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Doe;Ann\r\nFN:Ann Doe\r\n"
              "TEL;CELL:+120255500\r\nTEL;HOME:+120255501\r\n"
              "NOTE;ENCODING=QUOTED-PRINTABLE:a;b,c\\d=0D=0Ae\r\nEND:VCARD\r\n");
    EXPECT_EQ(WriteVcard(PlainCard(), VcardFormat::kVcard30),
              "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;Ann\r\nFN:Ann Doe\r\n"
              "TEL;TYPE=CELL:+120255500\r\nTEL;TYPE=HOME:+120255501\r\n"
              "NOTE:a\\;b\\,c\\\\d\\ne\r\nEND:VCARD\r\n");
}

TEST(WriteVcard, Version21NamesTheCharacterSet) {
    const Card card{{{Field::kN, {}, {"Weiß", "Zoë"}}}};
    EXPECT_EQ(LinesOf(WriteVcard(card, VcardFormat::kVcard21))[2],
              "N;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:Wei=C3=9F;Zo=C3=AB");
    EXPECT_EQ(LinesOf(WriteVcard(card, VcardFormat::kVcard30))[2], "N:Weiß;Zoë");
}

TEST(WriteVcard, LongTextStaysInShortLines) {
    const Card card{{{Field::kNote, {}, {string(300, 'x')}},
                     {Field::kPhoto, {"GIF"}, {string(300, '\xff')}, true}}};
    for (const VcardFormat format : {VcardFormat::kVcard21, VcardFormat::kVcard30}) {
        for (const string& line : LinesOf(WriteVcard(card, format))) {
            EXPECT_LE(line.size(), 76U);
        }
    }
}

TEST(WriteVcard, BinaryDataEndsWithAnEmptyLineInVersion21) {
    const Card card{{{Field::kPhoto, {"GIF"}, {"GIF87a"}, true}}};
    EXPECT_EQ(WriteVcard(card, VcardFormat::kVcard21),
              "BEGIN:VCARD\r\nVERSION:2.1\r\nPHOTO;GIF;ENCODING=BASE64:\r\n R0lGODdh\r\n\r\n"
              "END:VCARD\r\n");
    EXPECT_EQ(LinesOf(WriteVcard(card, VcardFormat::kVcard30))[2],
              "PHOTO;TYPE=GIF;ENCODING=b:R0lGODdh");
}

TEST(WriteVcard, AddressOfTheWebIsNotEscaped) {
    const Card card{{{Field::kUrl, {}, {"https://example.org/?a=1;b=2,3"}}}};
    EXPECT_EQ(LinesOf(WriteVcard(card, VcardFormat::kVcard30))[2],
              "URL:https://example.org/?a=1;b=2,3");
}

TEST(WriteVcard, ChosenFieldsComeWithTheMandatoryOnes) {
    const FieldSet note = Fields({Field::kNote});
    EXPECT_EQ(LinesOf(WriteVcard(PlainCard(), VcardFormat::kVcard21, note)),
              (std::vector<string>{"BEGIN:VCARD", "VERSION:2.1", "N:Doe;Ann", "TEL;CELL:+120255500",
                                   "TEL;HOME:+120255501",
                                   "NOTE;ENCODING=QUOTED-PRINTABLE:a;b,c\\d=0D=0Ae", "END:VCARD"}));
    EXPECT_EQ(
        LinesOf(WriteVcard(PlainCard(), VcardFormat::kVcard30, Fields({Field::kBday}))),
        (std::vector<string>{"BEGIN:VCARD", "VERSION:3.0", "N:Doe;Ann", "FN:Ann Doe",
                             "TEL;TYPE=CELL:+120255500", "TEL;TYPE=HOME:+120255501", "END:VCARD"}));
}

TEST(Card, ListingNameDropsEmptyComponentsAtItsEndOnly) {
    const Card card{{{Field::kN, {}, {"", "Ann", "", ""}}}};
    EXPECT_EQ(card.ListingName(), ";Ann");
    EXPECT_EQ(Card().ListingName(), "");
}

TEST(Card, HasWhatHasAValue) {
    const Card card{{{Field::kNote, {}, {"", ""}}, {Field::kOrg, {}, {"", "Sales"}}}};
    EXPECT_TRUE(card.Has(Field::kVersion));
    EXPECT_TRUE(card.Has(Field::kOrg));
    EXPECT_FALSE(card.Has(Field::kNote));
    EXPECT_FALSE(card.Has(Field::kTel));
}

}  // namespace
}  // namespace simulator
