#include "phonebook/vcard_handle.h"

#include "console/errors.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

const std::string kInvalidHandle =
    "Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'";
const std::string kInvalidUniqueId = "Invalid X-BT-UID entered";

std::string UniqueId(std::size_t length) {
    return "X-BT-UID:" + std::string(length, 'A');
}

// What is sent, or why nothing is.
std::string Outcome(const std::string& typed) {
    try {
        return "sent: " + VcardName(typed);
    } catch (const InvalidValueException& error) {
        return error.what();
    }
}

struct Row {
    std::string typed;
    std::string outcome;
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << testing::PrintToString(row.typed);
}

class VcardHandleTest : public testing::TestWithParam<Row> {};

TEST_P(VcardHandleTest, IsSentOrRefused) {
    EXPECT_EQ(Outcome(GetParam().typed), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    HexadecimalDigits, VcardHandleTest,
    testing::Values(Row{"0", "sent: 0.vcf"}, Row{"1A", "sent: 1A.vcf"}, Row{"1a", "sent: 1a.vcf"},
                    Row{"0000001A", "sent: 0000001A.vcf"}, Row{"FFFFFFFF", "sent: FFFFFFFF.vcf"},
                    Row{"000000001", kInvalidHandle}, Row{"123456789", kInvalidHandle},
                    Row{std::string(41, '0'), kInvalidHandle}));

// What the base-16 conversion takes is taken, and never rewritten.
INSTANTIATE_TEST_SUITE_P(
    BlanksSignsAndPrefixes, VcardHandleTest,
    testing::Values(Row{" 1A", "sent:  1A.vcf"}, Row{"\t1A", "sent: \t1A.vcf"},
                    Row{"       1", "sent:        1.vcf"}, Row{"        1", kInvalidHandle},
                    Row{"+1A", "sent: +1A.vcf"}, Row{"-1", "sent: -1.vcf"},
                    Row{"+1234567", "sent: +1234567.vcf"}, Row{"+12345678", kInvalidHandle},
                    Row{"0x1a", "sent: 0x1a.vcf"}, Row{"0X1A", "sent: 0X1A.vcf"},
                    Row{"0x123456", "sent: 0x123456.vcf"}, Row{"0x1234567", kInvalidHandle},
                    Row{" -0x1", "sent:  -0x1.vcf"}));

INSTANTIATE_TEST_SUITE_P(NoNumber, VcardHandleTest,
                         testing::Values(Row{"", kInvalidHandle}, Row{" ", kInvalidHandle},
                                         Row{"-", kInvalidHandle}, Row{"0x", kInvalidHandle},
                                         Row{"G", kInvalidHandle}, Row{"1G", kInvalidHandle},
                                         Row{"1A ", kInvalidHandle}, Row{"1A.vcf", kInvalidHandle},
                                         Row{"1 2", kInvalidHandle},
                                         Row{std::string("1A\0", 3), kInvalidHandle},
                                         Row{"\xC3\xA4", kInvalidHandle}));

INSTANTIATE_TEST_SUITE_P(UniqueIds, VcardHandleTest,
                         testing::Values(Row{UniqueId(32), "sent: " + UniqueId(32)},
                                         Row{UniqueId(31), kInvalidUniqueId},
                                         Row{UniqueId(33), kInvalidUniqueId},
                                         Row{UniqueId(0), kInvalidUniqueId},
                                         // Only their number counts.
                                         Row{"X-BT-UID:the rest is checked by the phone",
                                             "sent: X-BT-UID:the rest is checked by the phone"}));

// Anything but the prefix itself is meant as a handle.
INSTANTIATE_TEST_SUITE_P(NearlyUniqueIds, VcardHandleTest,
                         testing::Values(Row{"x-bt-uid:" + std::string(32, 'A'), kInvalidHandle},
                                         Row{"X-BT-UID", kInvalidHandle},
                                         Row{"X-BT-UID " + std::string(32, 'A'), kInvalidHandle},
                                         Row{" " + UniqueId(32), kInvalidHandle}));

TEST(VcardHandleLengthTest, FitsTheLongestName) {
    EXPECT_EQ(kMaxVcardHandleLength, UniqueId(32).size());
}

}  // namespace
}  // namespace morvane
