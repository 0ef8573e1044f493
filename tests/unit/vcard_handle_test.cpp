#include "phonebook/vcard_handle.h"

#include "console/errors.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

using namespace std::string_literals;

// Conversations send and refuse other handles and unique IDs of every length.
TEST(VcardHandleTest, SendsWhatTheBase16ConversionAcceptsAsItIs) {
    for (const std::string typed : {"FFFFFFFF", "\t1A", "       1", "+1A", "+1234567", " -0x1"})
        EXPECT_EQ(morvane::VcardName(typed), typed + ".vcf");
}

TEST(VcardHandleTest, RefusesWhatOnlyBeginsOrEndsWell) {
    const std::string id(32, 'A');
    for (const std::string& typed : {"+12345678"s, "        1"s, "1A "s, "1A\0"s, "-"s, "X-BT-UID"s,
                                     "X-BT-UID " + id, " X-BT-UID:" + id.substr(1)})
        EXPECT_THROW(morvane::VcardName(typed), morvane::InvalidValueException)
            << testing::PrintToString(typed);
    EXPECT_EQ(morvane::kMaxVcardHandleLength, ("X-BT-UID:" + id).size());
}

}  // namespace
}  // namespace morvane_test
