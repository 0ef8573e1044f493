#include "simulator/phone/vcard_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
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

FieldSet Only(Field field) {
    return FieldSet().set(static_cast<std::size_t>(field));
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
        {string(72, 'x') + "\xF0\x9F\x93\x9E", string(72, 'x') + "\r\n \xF0\x9F\x93\x9E"},
    };
    for (const auto& [line, folded] : rows) EXPECT_EQ(FoldLine(line), folded);
}

TEST(QuotedPrintable, EncodesAllButPlainAsciiInLinesOf76Characters) {
    const string x73(73, 'x');
    EXPECT_EQ(QuotedPrintable("a=é\r\n", 0), "a=3D=C3=A9=0D=0A");
    EXPECT_EQ(QuotedPrintable("a b ", 0), "a b=20");
    EXPECT_EQ(QuotedPrintable(x73 + "xxx", 0), x73 + "xxx");
    EXPECT_EQ(QuotedPrintable(x73 + "xxxx", 0), x73 + "xx=\r\nxx");
    EXPECT_EQ(QuotedPrintable(x73 + "éy", 0), x73 + "=\r\n=C3=A9y");
    EXPECT_EQ(QuotedPrintable("abcd", 74), "a=\r\nbcd");
}

TEST(WriteVcard, EncodesValuesAsEachVersionRequires) {
    const std::tuple<Property, string, string> rows[] = {
        {{Field::kN, {}, {"Weiß", "Zoë"}},
         "N;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:Wei=C3=9F;Zo=C3=AB\r\n",
         "N:Weiß;Zoë\r\n"},
        {{Field::kPhoto, {"GIF"}, {"GIF87a"}, true},
         "PHOTO;GIF;ENCODING=BASE64:\r\n R0lGODdh\r\n\r\n",
         "PHOTO;TYPE=GIF;ENCODING=b:R0lGODdh\r\n"},
        {{Field::kTel, {"CELL", "PREF"}, {"+1"}},
         "TEL;CELL;PREF:+1\r\n",
         "TEL;TYPE=CELL;TYPE=PREF:+1\r\n"},
        {{Field::kNote, {}, {"a;b,c\\d\ne"}},
         "NOTE;ENCODING=QUOTED-PRINTABLE:a;b,c\\d=0D=0Ae\r\n",
         "NOTE:a\\;b\\,c\\\\d\\ne\r\n"},
        {{Field::kOrg, {}, {"a;b,c\\d", "e"}}, "ORG:a\\;b,c\\d;e\r\n", "ORG:a\\;b\\,c\\\\d;e\r\n"},
        {{Field::kUrl, {}, {"https://example.org/?a=1;b=2,3"}},
         "URL:https://example.org/?a=1;b=2,3\r\n",
         "URL:https://example.org/?a=1;b=2,3\r\n"}};
    const auto card = [](const string& version, const string& lines) {
        return "BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + lines + "END:VCARD\r\n";
    };
    for (const auto& [property, in_21, in_30] : rows) {
        EXPECT_EQ(WriteVcard({{property}}, VcardFormat::kVcard21), card("2.1", in_21));
        EXPECT_EQ(WriteVcard({{property}}, VcardFormat::kVcard30), card("3.0", in_30));
    }
}

TEST(WriteVcard, FoldsLongValues) {
    const Card card{{{Field::kNote, {}, {string(300, 'x')}},
                     {Field::kPhoto, {"GIF"}, {string(300, '\xff')}, true}}};
    for (const VcardFormat format : {VcardFormat::kVcard21, VcardFormat::kVcard30}) {
        for (const string& line : LinesOf(WriteVcard(card, format))) EXPECT_LE(line.size(), 76U);
    }
}

TEST(WriteVcard, AddsTheMandatoryFieldsToTheChosenOnes) {
    EXPECT_EQ(LinesOf(WriteVcard(PlainCard(), VcardFormat::kVcard21, Only(Field::kNote))),
              (std::vector<string>{"BEGIN:VCARD", "VERSION:2.1", "N:Doe;Ann", "TEL;CELL:+120255500",
                                   "TEL;HOME:+120255501",
                                   "NOTE;ENCODING=QUOTED-PRINTABLE:a;b,c\\d=0D=0Ae", "END:VCARD"}));
    EXPECT_EQ(
        LinesOf(WriteVcard(PlainCard(), VcardFormat::kVcard30, Only(Field::kBday))),
        (std::vector<string>{"BEGIN:VCARD", "VERSION:3.0", "N:Doe;Ann", "FN:Ann Doe",
                             "TEL;TYPE=CELL:+120255500", "TEL;TYPE=HOME:+120255501", "END:VCARD"}));
}

TEST(Card, ListingNameDropsEmptyComponentsAtItsEndOnly) {
    const Card card{{{Field::kN, {}, {"", "Ann", "", ""}}}};
    EXPECT_EQ(card.ListingName(), ";Ann");
    EXPECT_EQ(Card().ListingName(), "");
}

TEST(Card, HasAFieldIfItHasAValue) {
    const Card card{{{Field::kNote, {}, {"", ""}}, {Field::kOrg, {}, {"", "Sales"}}}};
    EXPECT_TRUE(card.Has(Field::kVersion));
    EXPECT_TRUE(card.Has(Field::kOrg));
    EXPECT_FALSE(card.Has(Field::kNote));
    EXPECT_FALSE(card.Has(Field::kTel));
}

}  // namespace
}  // namespace simulator
