#include "uuid/uuid.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvane {
namespace {

const std::string kPhonebookServer = "0000112f-0000-1000-8000-00805f9b34fb";
const std::string kMixedCase = "01234567-89aB-CdEf-8899-aabbccDDeeff";
const std::vector<unsigned char> kMixedBytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef,
                                                0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};

std::string With(std::string text, std::size_t position, char character) {
    text[position] = character;
    return text;
}

std::string HexOf16(unsigned short value) {
    std::array<char, 6> text = {};
    text.fill('!');
    EXPECT_EQ(ConvertU16ToHex(text.data(), value), text.data() + 4);
    EXPECT_EQ(text[5], '!') << "wrote beyond its buffer";
    return text.data();
}

std::string HexOf32(unsigned int value) {
    std::array<char, 10> text = {};
    text.fill('!');
    EXPECT_EQ(ConvertU32ToHex(text.data(), value), text.data() + 8);
    EXPECT_EQ(text[9], '!') << "wrote beyond its buffer";
    return text.data();
}

std::string TextOf32(unsigned int uuid32) {
    std::array<char, kUuidTextSize + 1> text = {};
    text.fill('!');
    ConvertUUID32to128Char(text.data(), uuid32);
    EXPECT_EQ(text[kUuidTextSize], '!') << "wrote beyond its buffer";
    return text.data();
}

TEST(IsUUIDValidTest, AcceptsEitherCase) {
    EXPECT_TRUE(IsUUIDValid(kPhonebookServer));
    EXPECT_TRUE(IsUUIDValid(kMixedCase));
    EXPECT_TRUE(IsUUIDValid("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"));
}

TEST(IsUUIDValidTest, RefusesOtherLengths) {
    EXPECT_FALSE(IsUUIDValid(""));
    EXPECT_FALSE(IsUUIDValid(kPhonebookServer.substr(1)));
    EXPECT_FALSE(IsUUIDValid(kPhonebookServer.substr(0, 35)));
    EXPECT_FALSE(IsUUIDValid(kPhonebookServer + "0"));
}

TEST(IsUUIDValidTest, WantsHyphensInTheirPlacesOnly) {
    for (std::size_t position = 0; position < kMixedCase.size(); ++position) {
        SCOPED_TRACE(position);
        const bool hyphen = kMixedCase[position] == '-';
        EXPECT_EQ(IsUUIDValid(With(kMixedCase, position, '-')), hyphen);
        EXPECT_EQ(IsUUIDValid(With(kMixedCase, position, '0')), !hyphen);
    }
}

TEST(IsUUIDValidTest, RefusesTheNeighboursOfHexadecimalDigits) {
    for (const char stranger : {'/', ':', '@', 'G', '`', 'g', ' ', '\0', '\xff'})
        EXPECT_FALSE(IsUUIDValid(With(kPhonebookServer, 7, stranger))) << stranger;
}

TEST(ConvertUUID128To128CharTest, WritesLowerCaseText) {
    std::array<char, kUuidTextSize> text = {};
    EXPECT_TRUE(ConvertUUID128To128Char(text.data(), kUuidTextSize, kMixedBytes));
    EXPECT_STREQ(text.data(), "01234567-89ab-cdef-8899-aabbccddeeff");
}

TEST(ConvertUUID128To128CharTest, WritesNothingWithoutRoom) {
    std::array<char, kUuidTextSize> text = {'!'};
    EXPECT_FALSE(ConvertUUID128To128Char(text.data(), 36, kMixedBytes));
    EXPECT_FALSE(ConvertUUID128To128Char(text.data(), 0, kMixedBytes));
    EXPECT_EQ(text[0], '!');
}

TEST(ConvertU16ToHexTest, WritesFourDigits) {
    EXPECT_EQ(HexOf16(0), "0000");
    EXPECT_EQ(HexOf16(0x112f), "112f");
    EXPECT_EQ(HexOf16(0xABCD), "abcd");
    EXPECT_EQ(HexOf16(0xffff), "ffff");
}

TEST(ConvertU32ToHexTest, WritesEightDigits) {
    EXPECT_EQ(HexOf32(0), "00000000");
    EXPECT_EQ(HexOf32(0x0012ABCD), "0012abcd");
    EXPECT_EQ(HexOf32(0x89abcdef), "89abcdef");
    EXPECT_EQ(HexOf32(0xffffffff), "ffffffff");
}

TEST(ConvertUUID32to128CharTest, PutsTheNumberIntoTheBaseUuid) {
    EXPECT_EQ(TextOf32(0x112f), kPhonebookServer);
    EXPECT_EQ(TextOf32(0), "00000000-0000-1000-8000-00805f9b34fb");
    EXPECT_EQ(TextOf32(0xDEADBEEF), "deadbeef-0000-1000-8000-00805f9b34fb");
}

TEST(ConvertUUID16toUUID32Test, Widens) {
    EXPECT_EQ(ConvertUUID16toUUID32(0), 0U);
    EXPECT_EQ(ConvertUUID16toUUID32(0x112f), 0x112fU);
    EXPECT_EQ(ConvertUUID16toUUID32(0xffff), 0xffffU);
}

TEST(UUIDToLocalCaseTest, LowersEveryLetter) {
    EXPECT_EQ(UUIDToLocalCase(kMixedCase), "01234567-89ab-cdef-8899-aabbccddeeff");
    EXPECT_EQ(UUIDToLocalCase("Not a UUID!"), "not a uuid!");
    EXPECT_EQ(UUIDToLocalCase(""), "");
}

TEST(Convert128CharToUUID16Test, ReadsTheLowHalfOfTheFirstGroup) {
    EXPECT_EQ(Convert128CharToUUID16(kPhonebookServer), 0x112f);
    EXPECT_EQ(Convert128CharToUUID16("beefFFFF-0000-1000-8000-00805f9b34fb"), 0xffff);
    EXPECT_EQ(Convert128CharToUUID16("zzzz112f-0000-1000-8000-00805f9b34fb"), 0x112f);
}

TEST(Convert128CharToUUID16Test, KnowsTheBaseUuidOnly) {
    EXPECT_EQ(Convert128CharToUUID16("0000112F-0000-1000-8000-00805F9B34FB"), 0);
    EXPECT_EQ(Convert128CharToUUID16(kMixedCase), 0);
    EXPECT_EQ(Convert128CharToUUID16(kPhonebookServer + "0"), 0);
    EXPECT_EQ(Convert128CharToUUID16(kPhonebookServer.substr(0, 35)), 0);
}

TEST(Convert128CharToUUID16Test, GivesZeroForTextsWithoutASecondGroup) {
    EXPECT_EQ(Convert128CharToUUID16(""), 0);
    EXPECT_EQ(Convert128CharToUUID16("0000112"), 0);
    EXPECT_EQ(Convert128CharToUUID16("0000112f"), 0);
}

TEST(Convert128CharToUUID16Test, LeavesBadDigitsToTheStandardConversion) {
    EXPECT_THROW(Convert128CharToUUID16(With(kPhonebookServer, 4, 'z')), std::invalid_argument);
    EXPECT_EQ(Convert128CharToUUID16(With(kPhonebookServer, 6, 'z')), 0x11);
}

TEST(Convert128CharToUUID128Test, ReadsSixteenBytes) {
    std::vector<unsigned char> bytes(16);
    EXPECT_TRUE(Convert128CharToUUID128(bytes.data(), 16, kMixedCase));
    EXPECT_EQ(bytes, kMixedBytes);
}

TEST(Convert128CharToUUID128Test, SkipsHyphensUnchecked) {
    std::vector<unsigned char> bytes(16);
    EXPECT_TRUE(Convert128CharToUUID128(bytes.data(), 17, With(kMixedCase, 8, '?')));
    EXPECT_EQ(bytes, kMixedBytes);
}

TEST(Convert128CharToUUID128Test, RefusesTooLittleRoomAndOtherLengths) {
    std::vector<unsigned char> bytes(16, '!');
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 15, kMixedCase));
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 16, kMixedCase + "0"));
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 16, kMixedCase.substr(1)));
    EXPECT_EQ(bytes, std::vector<unsigned char>(16, '!'));
}

TEST(Convert128CharToUUID128Test, LeavesBadDigitsToTheStandardConversion) {
    std::vector<unsigned char> bytes(16);
    EXPECT_THROW(Convert128CharToUUID128(bytes.data(), 16, With(kMixedCase, 0, 'z')),
                 std::invalid_argument);
    EXPECT_TRUE(Convert128CharToUUID128(bytes.data(), 16, With(kMixedCase, 3, 'z')));
    EXPECT_EQ(bytes[1], 0x02);
}

}  // namespace
}  // namespace morvane
