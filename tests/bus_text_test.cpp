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
    std::string replaced;  // by ReplaceInvalidBytes
    std::string cut;       // by BusText
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << testing::PrintToString(row.typed);
}

class BusTextTest : public testing::TestWithParam<Row> {};

TEST_P(BusTextTest, IsReplacedOrCut) {
    EXPECT_EQ(ReplaceInvalidBytes(GetParam().typed), GetParam().replaced);
    EXPECT_EQ(BusText(GetParam().typed), GetParam().cut);
}

Row Unchanged(const std::string& text) {
    return {text, text, text};
}

INSTANTIATE_TEST_SUITE_P(Valid, BusTextTest,
                         testing::Values(Unchanged(""), Unchanged("plain"),
                                         Unchanged("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
                                         Unchanged("? stays ?"), Unchanged("\x7F\x01")));

INSTANTIATE_TEST_SUITE_P(LastCharacterIncomplete, BusTextTest,
                         testing::Values(Row{"ab\xC3", "ab?", "ab"},
                                         Row{"ab\xE2\x82", "ab??", "ab"},
                                         Row{"ab\xF0\x9F\x98", "ab???", "ab"}, Row{"\xE2", "?", ""},
                                         Row{"\xC3\xA4\xC3", "\xC3\xA4?", "\xC3\xA4"}));

INSTANTIATE_TEST_SUITE_P(
    NoCharacter, BusTextTest,
    testing::Values(Row{"\xFF", "?", "?"}, Row{"a\x80", "a?", "a?"}, Row{"M\xE4rz", "M?rz", "M?rz"},
                    Row{"\xE2\x82 a", "?? a", "?? a"}, Row{"\xC0\x80", "??", "??"},
                    Row{"\xED\xA0\x80", "???", "???"}, Row{"\xF4\x90\x80\x80", "????", "????"},
                    Row{"\xFF\xC3\xA4", "?\xC3\xA4", "?\xC3\xA4"},
                    Row{"\xE2\x82\xFF\xE2", "????", "???"}));

// The end of the text is not what is wrong with these: no byte behind them makes a character of
// them.
INSTANTIATE_TEST_SUITE_P(NoCharacterAtTheEnd, BusTextTest,
                         testing::Values(Row{"ab\xC0", "ab?", "ab?"}, Row{"ab\xF5", "ab?", "ab?"},
                                         Row{"\xE0\x80", "??", "??"}, Row{"\xED\xA0", "??", "??"},
                                         Row{"\xF0\x80\x80", "???", "???"},
                                         Row{"\xF4\x90", "??", "??"},
                                         Row{std::string("\xC3\0b", 3), "??b", "??b"}));

INSTANTIATE_TEST_SUITE_P(FirstBytesThatForbidOneBehindThem, BusTextTest,
                         testing::Values(Row{"\xE0", "?", ""}, Row{"\xED", "?", ""},
                                         Row{"\xF0", "?", ""}, Row{"\xF4", "?", ""}));

TEST(ReplaceInvalidBytesTest, ReplacesNulBytes) {
    EXPECT_EQ(ReplaceInvalidBytes(std::string("a\0b", 3)), "a?b");
}

// Calls `check` with every text of that length over bytes of all kinds.
template <typename Check>
void ForEachText(std::size_t length, const std::string& prefix, const Check& check) {
    if (prefix.size() == length) return check(prefix);
    for (const char byte : std::string("a\x80\xBF\xC0\xC3\xE0\xE2\xED\xF0\xF4\xFF"))
        ForEachText(length, prefix + byte, check);
}

TEST(BusTextSweepTest, IsAlwaysValidAndNeverLonger) {
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
