#include "phonebook/vcard_handle.h"

#include "console/errors.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace morvane {
namespace {

using namespace std::string_literals;

const std::string kInvalidHandle =
    "Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'";
const std::string kInvalidUniqueId = "Invalid X-BT-UID entered";

std::string UniqueId(std::size_t length) {
    return "X-BT-UID:" + std::string(length, 'A');
}

// The name that is sent, or the error.
std::string Outcome(const std::optional<std::string>& typed) {
    try {
        return "sent: " + VcardName(typed);
    } catch (const InvalidValueException& error) {
        return error.what();
    }
}

// Handles that the base-16 conversion accepts are sent unchanged.
TEST(VcardHandleTest, AcceptsHexNumbersOfUpToEightCharacters) {
    for (const std::string typed :
         {"0", "1A", "1a", "0000001A", "FFFFFFFF", " 1A", "\t1A", "       1", "+1A", "-1",
          "+1234567", "0x1a", "0X1A", "0x123456", " -0x1"})
        EXPECT_EQ(Outcome(typed), "sent: " + typed + ".vcf");
    for (const std::string& typed : {"000000001"s, "123456789"s, "        1"s, "+12345678"s,
                                     "0x1234567"s, ""s, " "s, "-"s, "0x"s, "G"s, "1G"s, "1A "s,
                                     "1A.vcf"s, "1 2"s, "1A\0"s, "\xC3\xA4"s, std::string(41, '0')})
        EXPECT_EQ(Outcome(typed), kInvalidHandle) << testing::PrintToString(typed);
}

TEST(VcardHandleTest, RejectsMissingAnswer) {
    EXPECT_EQ(Outcome(std::nullopt), "Invalid vCard handle entered");
}

TEST(VcardHandleTest, AcceptsUniqueIdsWithPrefixAndExactLength) {
    for (const std::string& typed : {UniqueId(32), "X-BT-UID:the rest is checked by the phone"s})
        EXPECT_EQ(Outcome(typed), "sent: " + typed);
    for (const std::size_t length : {0U, 31U, 33U})
        EXPECT_EQ(Outcome(UniqueId(length)), kInvalidUniqueId) << length;
    for (const std::string& typed : {"x-bt-uid:" + std::string(32, 'A'), "X-BT-UID"s,
                                     "X-BT-UID " + std::string(32, 'A'), " " + UniqueId(32)})
        EXPECT_EQ(Outcome(typed), kInvalidHandle) << typed;
    EXPECT_EQ(kMaxVcardHandleLength, UniqueId(32).size());
}

}  // namespace
}  // namespace morvane
