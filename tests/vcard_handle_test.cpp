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

const Row kRows[] = {
    {"0", "sent: 0.vcf"},
    {"1A", "sent: 1A.vcf"},
    {"1a", "sent: 1a.vcf"},
    {"0000001A", "sent: 0000001A.vcf"},
    {"FFFFFFFF", "sent: FFFFFFFF.vcf"},
    {"000000001", kInvalidHandle},
    {"123456789", kInvalidHandle},
    {std::string(41, '0'), kInvalidHandle},
    // What the base-16 conversion accepts is accepted, and never rewritten.
    {" 1A", "sent:  1A.vcf"},
    {"\t1A", "sent: \t1A.vcf"},
    {"       1", "sent:        1.vcf"},
    {"        1", kInvalidHandle},
    {"+1A", "sent: +1A.vcf"},
    {"-1", "sent: -1.vcf"},
    {"+1234567", "sent: +1234567.vcf"},
    {"+12345678", kInvalidHandle},
    {"0x1a", "sent: 0x1a.vcf"},
    {"0X1A", "sent: 0X1A.vcf"},
    {"0x123456", "sent: 0x123456.vcf"},
    {"0x1234567", kInvalidHandle},
    {" -0x1", "sent:  -0x1.vcf"},
    // No number.
    {"", kInvalidHandle},
    {" ", kInvalidHandle},
    {"-", kInvalidHandle},
    {"0x", kInvalidHandle},
    {"G", kInvalidHandle},
    {"1G", kInvalidHandle},
    {"1A ", kInvalidHandle},
    {"1A.vcf", kInvalidHandle},
    {"1 2", kInvalidHandle},
    {std::string("1A\0", 3), kInvalidHandle},
    {"\xC3\xA4", kInvalidHandle},
    // Of a unique ID only the length counts.
    {UniqueId(32), "sent: " + UniqueId(32)},
    {UniqueId(31), kInvalidUniqueId},
    {UniqueId(33), kInvalidUniqueId},
    {UniqueId(0), kInvalidUniqueId},
    {"X-BT-UID:the rest is checked by the phone",
     "sent: X-BT-UID:the rest is checked by the phone"},
    // Without the exact prefix it is a handle.
    {"x-bt-uid:" + std::string(32, 'A'), kInvalidHandle},
    {"X-BT-UID", kInvalidHandle},
    {"X-BT-UID " + std::string(32, 'A'), kInvalidHandle},
    {" " + UniqueId(32), kInvalidHandle},
};

TEST(VcardHandleTest, IsSentOrRefused) {
    for (const Row& row : kRows)
        EXPECT_EQ(Outcome(row.typed), row.outcome) << testing::PrintToString(row.typed);
    EXPECT_EQ(kMaxVcardHandleLength, UniqueId(32).size());
}

}  // namespace
}  // namespace morvane
