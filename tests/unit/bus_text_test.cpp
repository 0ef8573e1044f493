#include "interfaces/bus_text.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

bool IsValid(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

struct Row {
    std::string typed;
    std::string replaced;  // expected from ReplaceInvalidBytes
    std::string cut;       // expected from BusText
};

const Row kRows[] = {
    {"", "", ""},
    {"? \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\x01",
     "? \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\x01",
     "? \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\x01"},
    // The last character is incomplete.
    {"\xC3\xA4\xC3", "\xC3\xA4?", "\xC3\xA4"},
    {"ab\xE2\x82", "ab??", "ab"},
    {"ab\xF0\x9F\x98", "ab???", "ab"},
    // After these first bytes not every continuation byte is valid.
    {"\xE0", "?", ""},
    {"\xED", "?", ""},
    {"\xF0", "?", ""},
    {"\xF4", "?", ""},
    // Invalid anywhere in a text.
    {"\xFF\xC3\xA4", "?\xC3\xA4", "?\xC3\xA4"},
    {"M\xE4rz\x80", "M?rz?", "M?rz?"},
    {"\xE2\x82\xFF\xE2", "????", "???"},
    {"\xED\xA0\x80\xC0\x80", "?????", "?????"},
    {"\xF4\x90\x80\x80", "????", "????"},
    {std::string("a\0b", 3), "a?b", "a?b"},
    // Invalid at the end too: no following byte completes them.
    {"ab\xC0", "ab?", "ab?"},
    {"ab\xF5", "ab?", "ab?"},
    {"\xE0\x80", "??", "??"},
    {"\xED\xA0", "??", "??"},
    {"\xF0\x80\x80", "???", "???"},
    {"\xF4\x90", "??", "??"},
    {std::string("\xC3\0b", 3), "??b", "??b"},
};

TEST(BusTextTest, ReplacesInvalidBytesAndDropsIncompleteLastCharacter) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::PrintToString(row.typed));
        EXPECT_EQ(ReplaceInvalidBytes(row.typed), row.replaced);
        EXPECT_EQ(BusText(row.typed), row.cut);
    }
}

// Calls `check` with every text of `length` bytes over an alphabet with each class of UTF-8 bytes.
template <typename Check>
void ForEachText(std::size_t length, const std::string& prefix, const Check& check) {
    if (prefix.size() == length) return check(prefix);
    for (const char byte : std::string("a\x80\xBF\xC0\xC3\xE0\xE2\xED\xF0\xF4\xFF"))
        ForEachText(length, prefix + byte, check);
}

TEST(BusTextTest, ReturnsValidUtf8OfAtMostTheSameLength) {
    for (std::size_t length = 1; length <= 4; ++length) {
        ForEachText(length, "", [](const std::string& text) {
            const std::string replaced = ReplaceInvalidBytes(text);
            ASSERT_TRUE(IsValid(replaced)) << testing::PrintToString(text);
            ASSERT_EQ(replaced.size(), text.size()) << testing::PrintToString(text);
            const std::string cut = BusText(text);
            ASSERT_EQ(cut, replaced.substr(0, cut.size())) << testing::PrintToString(text);
            ASSERT_EQ(replaced.find_first_not_of('?', cut.size()), replaced.npos)
                << testing::PrintToString(text);
            ASSERT_TRUE(!IsValid(text) || cut == text) << testing::PrintToString(text);
        });
    }
}

}  // namespace
}  // namespace morvane
