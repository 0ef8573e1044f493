#include "uuid/uuid.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace morvane {
namespace {

using Bytes = std::vector<unsigned char>;

const std::string kPhonebookServer = "0000112f-0000-1000-8000-00805f9b34fb";
const std::string kMixedCase = "01234567-89aB-CdEf-8899-aabbccDDeeff";
const std::string kLowerCase = "01234567-89ab-cdef-8899-aabbccddeeff";
const Bytes kMixedBytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef,
                           0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};

std::string With(std::string text, std::size_t position, char character) {
    text[position] = character;
    return text;
}

// The text that `write` writes; checks that it has `length` characters and a terminator, and that
// `write` returns its end.
std::string Written(std::size_t length, const std::function<char*(char*)>& write) {
    std::string text(length + 2, '!');
    EXPECT_EQ(write(text.data()), text.data() + length);
    EXPECT_EQ(text.substr(length), std::string("\0!", 2));
    return text.substr(0, length);
}

TEST(IsUUIDValidTest, AcceptsBothCasesAndOneLength) {
    EXPECT_TRUE(IsUUIDValid(kMixedCase));
    EXPECT_TRUE(IsUUIDValid("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"));
    for (const std::string& text :
         {std::string(), kMixedCase.substr(1), kMixedCase.substr(0, 35), kMixedCase + "0"})
        EXPECT_FALSE(IsUUIDValid(text)) << text;
}

TEST(IsUUIDValidTest, RequiresHyphensAtTheirPositionsAndDigitsElsewhere) {
    for (std::size_t position = 0; position < kMixedCase.size(); ++position) {
        const bool hyphen = kMixedCase[position] == '-';
        EXPECT_EQ(IsUUIDValid(With(kMixedCase, position, '-')), hyphen) << position;
        EXPECT_EQ(IsUUIDValid(With(kMixedCase, position, '0')), !hyphen) << position;
    }
    for (const char neighbour : {'/', ':', '@', 'G', '`', 'g', ' ', '\0', '\xff'})
        EXPECT_FALSE(IsUUIDValid(With(kPhonebookServer, 7, neighbour))) << neighbour;
}

TEST(ConvertUUID128To128CharTest, WritesLowerCaseTextIfBufferIsLargeEnough) {
    std::array<char, kUuidTextSize> text = {'!'};
    EXPECT_FALSE(ConvertUUID128To128Char(text.data(), 36, kMixedBytes));
    EXPECT_FALSE(ConvertUUID128To128Char(text.data(), 0, kMixedBytes));
    EXPECT_EQ(text[0], '!');
    EXPECT_TRUE(ConvertUUID128To128Char(text.data(), kUuidTextSize, kMixedBytes));
    EXPECT_EQ(text.data(), kLowerCase);
}

TEST(HexTest, WritesAllDigitsInLowerCase) {
    const std::pair<unsigned short, const char*> rows16[] = {
        {0, "0000"}, {0x112f, "112f"}, {0xABCD, "abcd"}, {0xffff, "ffff"}};
    for (const auto& [value, text] : rows16)
        EXPECT_EQ(Written(4, [number = value](char* out) { return ConvertU16ToHex(out, number); }),
                  text);
    const std::pair<unsigned int, const char*> rows32[] = {{0, "00000000"},
                                                           {0x0012ABCD, "0012abcd"},
                                                           {0x89abcdef, "89abcdef"},
                                                           {0xffffffff, "ffffffff"}};
    for (const auto& [value, text] : rows32) {
        EXPECT_EQ(Written(8, [number = value](char* out) { return ConvertU32ToHex(out, number); }),
                  text);
        EXPECT_EQ(Written(36,
                          [number = value](char* out) {
                              ConvertUUID32to128Char(out, number);
                              return out + 36;
                          }),
                  text + kPhonebookServer.substr(8));
    }
}

TEST(ConvertUUID16toUUID32Test, KeepsTheValue) {
    for (const unsigned number : {0U, 0x112fU, 0xffffU})
        EXPECT_EQ(ConvertUUID16toUUID32(static_cast<unsigned short>(number)), number);
}

TEST(UUIDToLocalCaseTest, ConvertsEveryLetterToLowerCase) {
    EXPECT_EQ(UUIDToLocalCase(kMixedCase), kLowerCase);
    EXPECT_EQ(UUIDToLocalCase("Not a UUID!"), "not a uuid!");
    EXPECT_EQ(UUIDToLocalCase(""), "");
}

TEST(Convert128CharToUUID16Test, ReadsLowHalfOfFirstGroupOfBaseUuid) {
    const std::pair<std::string, unsigned short> rows[] = {
        {kPhonebookServer, 0x112f},
        {"beefFFFF-0000-1000-8000-00805f9b34fb", 0xffff},
        {"zzzz112f-0000-1000-8000-00805f9b34fb", 0x112f},
        {With(kPhonebookServer, 6, 'z'), 0x11},
        {"0000112F-0000-1000-8000-00805F9B34FB", 0},
        {kMixedCase, 0},
        {kPhonebookServer + "0", 0},
        {kPhonebookServer.substr(0, 35), 0},
        {"", 0},
        {"0000112", 0},
        {"0000112f", 0}};
    for (const auto& [text, number] : rows) EXPECT_EQ(Convert128CharToUUID16(text), number) << text;
    EXPECT_THROW(Convert128CharToUUID16(With(kPhonebookServer, 4, 'z')), std::invalid_argument);
}

TEST(Convert128CharToUUID128Test, ReadsSixteenBytesWithoutCheckingHyphens) {
    for (const std::string& text : {kMixedCase, With(kMixedCase, 8, '?')}) {
        Bytes bytes(17, '!');
        EXPECT_TRUE(Convert128CharToUUID128(bytes.data(), 16, text));
        EXPECT_EQ(bytes.back(), '!');
        bytes.pop_back();
        EXPECT_EQ(bytes, kMixedBytes);
    }
}

TEST(Convert128CharToUUID128Test, RejectsSmallBufferWrongLengthAndNonDigit) {
    Bytes bytes(16, '!');
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 15, kMixedCase));
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 16, kMixedCase + "0"));
    EXPECT_FALSE(Convert128CharToUUID128(bytes.data(), 16, kMixedCase.substr(1)));
    EXPECT_EQ(bytes, Bytes(16, '!'));
    EXPECT_THROW(Convert128CharToUUID128(bytes.data(), 16, With(kMixedCase, 0, 'z')),
                 std::invalid_argument);
    EXPECT_TRUE(Convert128CharToUUID128(bytes.data(), 16, With(kMixedCase, 3, 'z')));
    EXPECT_EQ(bytes[1], 0x02);
}

}  // namespace
}  // namespace morvane
