#include "simulator/phone/vcard_reader.h"
#include "simulator/phone/vcard_writer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace simulator {
namespace {

using std::string;

/// "TEL;CELL;PREF=+1202 N=Doe|Ann", one property a line.
string Described(const Card& card) {
    string text;
    for (const Property& property : card.properties) {
        text += FieldName(property.field);
        for (const string& type : property.types) text += ";" + type;
        const char* separator = property.binary ? "#" : "=";
        for (const string& component : property.components) {
            text += separator + component;
            separator = "|";
        }
        text += "\n";
    }
    return text;
}

string Described(const VcardFile& file) {
    string text;
    for (const Card& card : file.cards) text += (text.empty() ? "" : "--\n") + Described(card);
    for (const VcardComplaint& complaint : file.complaints)
        text += std::to_string(complaint.line) + ": " + complaint.reason + "\n";
    return text;
}

/// A card of this version with N, FN and `lines`.
string CardOf(const string& version, const string& lines) {
    return "BEGIN:VCARD\r\nVERSION:" + version + "\r\nN:Doe;Ann\r\nFN:Ann\r\n" + lines +
           "END:VCARD\r\n";
}
const string kNames = "N=Doe|Ann\nFN=Ann\n";

struct Row {
    const char* name;
    string text;
    string expected;
};

const Row kProperties[] = {
    {"TypesOfEitherVersion",
     CardOf("2.1",
            "TEL;CELL;voice:+1\r\nTEL;TYPE=HOME,Fax:+2\r\nTEL;TYPE=WORK;TYPE=PREF:+3\r\n"
            "TEL;TYPE=\"work,cell\":+4\r\nTEL:+5\r\nTEL;X-1=a;type=a/b:+6\r\n"),
     kNames + "TEL;CELL;VOICE=+1\nTEL;HOME;FAX=+2\nTEL;WORK;PREF=+3\nTEL;WORK;CELL=+4\nTEL=+5\n"
              "TEL=+6\n"},
    {"QuotedParameters", CardOf("3.0", "TEL;X-A=\"b:c;TYPE=HOME\";TYPE=\"cell\":+1\r\n"),
     kNames + "TEL;CELL=+1\n"},
    {"LowerCaseAndGroups",
     "begin:vcard\nversion:3.0\nn:Doe;Ann\nfn:Ann\nitem1.tel;type=cell:+1\n"
     "item1.X-ABLabel:a\nA-1.Email:a@b\nend:vcard\n",
     kNames + "TEL;CELL=+1\nEMAIL=a@b\n"},
    {"FoldedLinesOfVersion30", CardOf("3.0", "NOTE:ab\r\n c\r\n\td\r\n  e\r\nTE\r\n L:+1\r\n"),
     kNames + "NOTE=abcd e\nTEL=+1\n"},
    {"FoldedLinesOfVersion21", CardOf("2.1", "NOTE:ab\r\n c\r\nTEL:+1\r\n"),
     kNames + "NOTE=ab c\nTEL=+1\n"},
    {"BareLineFeeds", "BEGIN:VCARD\nVERSION:3.0\nN:Doe;Ann\nFN:Ann\nNOTE:a\n b\nEND:VCARD",
     kNames + "NOTE=ab\n"},
    {"ByteOrderMark", "\xef\xbb\xbf" + CardOf("3.0", ""), kNames},
    {"BlanksAndEmptyLines", "\r\n" + CardOf(" 3.0 ", "\r\nTEL:+1\r\n \r\n\r\n") + "\r\n",
     kNames + "TEL=+1\n"},
    {"QuotedPrintable",
     CardOf("2.1",
            "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:Z=C3=AB=0D=0Aa=\r\n b=\r\n"
            "c:=3d\r\nTITLE;quoted-printable:=41=\r\n\r\n"),
     kNames + "NOTE=Zë\na bc:=\nTITLE=A\n"},
    {"Base64OfVersion21",
     CardOf("2.1", "PHOTO;JPEG;ENCODING=BASE64:\r\n R0lG\r\n ODdh\r\n\r\nTEL:+1\r\n"),
     kNames + "PHOTO;JPEG#GIF87a\nTEL=+1\n"},
    {"Base64WithoutFolding",
     CardOf("2.1",
            "PHOTO;TYPE=JPEG;BASE64:\r\nR0lG\r\nODdh\r\nTEL:+1\r\n"
            "LOGO;ENCODING=b:R0k=\r\n"),
     kNames + "PHOTO;JPEG#GIF87a\nTEL=+1\nLOGO#GI\n"},
    {"Base64OfVersion30", CardOf("3.0", "PHOTO;ENCODING=b;TYPE=JPEG:R0lG\r\n ODdh\r\nTEL:+1\r\n"),
     kNames + "PHOTO;JPEG#GIF87a\nTEL=+1\n"},
    {"TextInBase64", CardOf("2.1", "NOTE;ENCODING=BASE64;CHARSET=ISO-8859-1:Wus=\r\n"),
     kNames + "NOTE=Zë\n"},
    {"OtherCharacterSets",
     CardOf("2.1",
            "NOTE;CHARSET=ISO-8859-1:Z\xeb\r\n"
            "TITLE;CHARSET=iso-8859-1;ENCODING=QUOTED-PRINTABLE:Z=EB\r\n"
            "ROLE;CHARSET=utf-8:Zë\r\n"),
     kNames + "NOTE=Zë\nTITLE=Zë\nROLE=Zë\n"},
    {"EscapesOfVersion30",
     CardOf("3.0", "ORG:a\\;b;c\\,d\r\nNOTE:a\\nb\\Nc\\;d;e\\\\n\\x\\\r\nURL:https\\://a/;b,c\r\n"),
     kNames + "ORG=a;b|c,d\nNOTE=a\nb\nc;d;e\\n\\x\\\nURL=https://a/;b,c\n"},
    {"EscapesOfVersion21", CardOf("2.1", "ORG:a\\;b;c\\,d\r\nNOTE:a\\;b;\\n\r\n"),
     kNames + "ORG=a;b|c\\,d\nNOTE=a\\;b;\\n\n"},
    {"WhatIsSkipped",
     CardOf("3.0",
            "PHOTO;VALUE=URI:https://a/b.jpg\r\nPHOTO:https://a\r\nLOGO;VALUE=uri:a\r\n"
            "SOUND;VALUE=URI:a\r\nSOUND;X-IRMC-N:Ann Doe\r\nPHOTO;ENCODING=b:\r\n"
            "X-FOO:\xff\r\nREV:1\r\n"),
     kNames + "SOUND;X-IRMC-N=Ann Doe\nREV=1\n"},
    {"CardInACard",
     CardOf("2.1", "AGENT:\r\nBEGIN:VCARD\r\nVERSION:2.1\r\nN:Agent\r\nEND:VCARD\r\nTEL:+1\r\n"),
     kNames + "TEL=+1\n"},
    {"OneOfBothNames",
     "BEGIN:VCARD\nVERSION:2.1\nN:Doe;Ann\nEND:VCARD\nBEGIN:VCARD\nVERSION:2.1\nN:;Ann\n"
     "END:VCARD\nBEGIN:VCARD\nVERSION:3.0\nFN:Ann Doe\nEND:VCARD\n",
     "N=Doe|Ann\nFN=Ann Doe\n--\nN=|Ann\nFN=Ann\n--\nFN=Ann Doe\nN=Ann Doe||||\n"},
    {"VersionAfterName", "BEGIN:VCARD\nN:a\\,b\nFN:Ann\nVERSION:3.0\nEND:VCARD\n",
     "N=a,b\nFN=Ann\n"},
    {"Nothing", "", ""},
};

/// Appends a valid card to the malformed text.
Row Malformed(const char* name, const string& text, const string& complaints) {
    return {name, text + CardOf("3.0", ""), kNames + complaints};
}

const Row kMalformed[] = {
    Malformed("TextOutsideOfCards", "\na:b\nEND:VCARD\n", "2: This is outside of a card\n"),
    Malformed("NoEnd", "BEGIN:VCARD\nVERSION:3.0\nFN:a\n", "1: The card has no END:VCARD\n"),
    Malformed("NoVersion", "BEGIN:VCARD\nFN:a\nEND:VCARD\n", "1: The card has no VERSION\n"),
    Malformed("OtherVersion", "BEGIN:VCARD\nVERSION:4.0\nFN:a\nEND:VCARD\n",
              "2: The version is neither 2.1 nor 3.0\n"),
    Malformed("NoName", "\nBEGIN:VCARD\nVERSION:3.0\nTEL:1\nEND:VCARD\n",
              "2: The card has neither N nor FN\n"),
    Malformed("NoColon", CardOf("3.0", "TEL\r\nNOTE\r\n"), "5: There is no colon behind a name\n"),
    Malformed("QuotedPrintable", CardOf("2.1", "NOTE;QUOTED-PRINTABLE:a=\r\nb=4G\r\n"),
              "5: The value is not quoted-printable\n"),
    Malformed("TruncatedBase64", CardOf("2.1", "TEL:1\r\nPHOTO;BASE64:\r\n R0l\r\n\r\n"),
              "6: The value is not base64\n"),
    Malformed("LetterInBase64", CardOf("2.1", "PHOTO;ENCODING=BASE64:R0l.\r\n"),
              "5: The value is not base64\n"),
    Malformed("Encoding", CardOf("2.1", "NOTE;ENCODING=ROT13:a\r\n"),
              "5: The encoding is unknown\n"),
    Malformed("InvalidUtf8", CardOf("2.1", "NOTE:Z\xeb\r\n"), "5: The text is not in UTF-8\n"),
    Malformed("ZeroByte", CardOf("2.1", "NOTE;QUOTED-PRINTABLE:=00\r\n"),
              "5: The text is not in UTF-8\n"),
    Malformed("UnknownCharacterSet", CardOf("2.1", "NOTE;CHARSET=X-NONE:Z\r\n"),
              "5: The text is not in its CHARSET, or that is unknown\n"),
    Malformed("OneOfTwo", CardOf("4.0", "") + CardOf("2.1", "TEL\r\n"),
              "2: The version is neither 2.1 nor 3.0\n10: There is no colon behind a name\n"),
};

TEST(VcardReader, ReadsProperties) {
    for (const auto& [name, text, expected] : kProperties)
        EXPECT_EQ(Described(ReadVcards(text)), expected) << name;
}

TEST(VcardReader, ReportsMalformedCardsAndReadsTheNext) {
    for (const auto& [name, text, expected] : kMalformed)
        EXPECT_EQ(Described(ReadVcards(text)), expected) << name;
}

TEST(VcardReaderAndWriter, AgreeInBothVersions) {
    const Card card{{{Field::kN, {}, {"Wei;ß", "Zoë", "", "", ""}},
                     {Field::kFn, {}, {"Zoë"}},
                     {Field::kTel, {"CELL", "PREF"}, {"+12025550001"}},
                     {Field::kNote, {}, {"a;b,c\n" + string(200, 'd') + " ="}},
                     {Field::kPhoto, {"JPEG"}, {string(300, '\xff')}, true},
                     {Field::kUrl, {}, {"https://example.org/?a=1;b=2,3"}}}};
    for (const VcardFormat format : {VcardFormat::kVcard21, VcardFormat::kVcard30}) {
        const string text = WriteVcard(card, format);
        EXPECT_EQ(Described(ReadVcards(text)), Described(card)) << text;
    }
}

}  // namespace
}  // namespace simulator
