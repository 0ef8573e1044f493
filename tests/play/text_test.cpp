// How lines and answers are written into a file and read from it.

#include "play/answer.h"
#include "play/line_editor.h"
#include "play/pattern.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace play {
namespace {

TEST(PatternTest, LiteralMatchesItselfOnly) {
    for (const std::string line : {"", "plain", "#", "# x", "% x", "$ x", "...", "\\", "\\x",
                                   "\\\\x", "[..]", "\\[..]", "\\\\[..]", "a[..]\\[..]b", "a\\",
                                   "Vantor >", "Vantor > x", "Vantor/A ? x", "\\\\\\[..]x"}) {
        const std::string written = WriteLiteral(line);
        EXPECT_TRUE(Pattern(written).Matches(line)) << written;
        EXPECT_FALSE(Pattern(written).Matches(line + "x")) << written;
        EXPECT_FALSE(Pattern(written).Matches("x" + line)) << written;
    }
}

TEST(PatternTest, WritesWildcardsForVaryingText) {
    const std::pair<const char*, const char*> lines[] = {
        {" 0) 02:00:5E:10:00:02 | Birch", " 0) [..] | Birch"},
        {"02:00:5E:10:00:02", "[..]"},
        {"102:00:5E:10:00:02", "102:00:5E:10:00:02"},
        {"Found Device /a/hci0/dev_02_00_5E_10_00_02", "Found Device /a/hci0/dev_[..]"},
        {"Session: /a/client/session0", "Session: /a/client/session[..]"},
        {"/a/session12/transfer3", "/a/session[..]/transfer[..]"},
        {"Filename: /tmp/x.AbC123/card.vcf", "Filename: [..]/card.vcf"},
        {"Filename: card.vcf", "Filename: card.vcf"},
        {"REV:20261122T051015Z", "REV:[..]"},
        {"X-IRMC-CALL-DATETIME:20261122T051015", "X-IRMC-CALL-DATETIME:[..]"},
        {"TEL:+44770097755", "TEL:+44770097755"},
        {"[..] 02:00:5E:10:00:02", "\\[..] [..]"},
        {"# 02:00:5E:10:00:02", "\\# [..]"},
    };
    for (const auto& [line, expected] : lines) {
        EXPECT_EQ(WriteGeneral(line), expected);
        EXPECT_TRUE(Pattern(expected).Matches(line)) << expected;
    }
}

TEST(AnswerTest, WrittenTextIsTyped) {
    for (const std::string text :
         {"", " ", "x", " x ", "\\", "x\\", "^C", "^", "a^b", "\t", "[..]", "\\^C", "x  "}) {
        const Answer answer = ParseAnswer(WriteAnswer(text));
        EXPECT_EQ(answer.keys, text + "\n") << WriteAnswer(text);
        EXPECT_EQ(answer.echo, text);
    }
}

TEST(AnswerTest, ReadsKeys) {
    struct {
        const char* answer;
        std::string keys;
        std::string echo;
    } const rows[] = {
        {"^Aa^[^V^C^V^?", "\1a\x1b\x16\3\x16\x7f\n", "^Aa^[^C^?"},
        {"^C\\", "\3\n", "^C"},
        {"^D", "\4", ""},
        {"^C", "\3", "^C"},
        {"^C^\\", "\3\x1c", "^C^\\"},
        {"^Cq", "\3q\n", "^Cq"},
    };
    for (const auto& [answer, keys, echo] : rows) {
        EXPECT_EQ(ParseAnswer(answer).keys, keys) << answer;
        EXPECT_EQ(ParseAnswer(answer).echo, echo) << answer;
    }
}

TEST(AnswerTest, PausesAtKeysThatSendSignals) {
    using Pauses = std::vector<std::tuple<std::size_t, std::size_t, bool>>;
    const std::pair<const char*, Pauses> rows[] = {
        {"ab", {}},
        {"^C", {}},
        {"^V^Cq", {}},
        {"^Cq", {{1, 2, true}}},
        {"^C\\", {{1, 2, true}}},
        {"^C^V^C", {{1, 2, true}}},
        {"ab^C^\\", {{2, 2, false}, {3, 4, true}}},
        {"^Ca^C", {{1, 2, true}, {2, 3, false}}},
    };
    for (const auto& [answer, expected] : rows) {
        Pauses pauses;
        for (const Answer::Pause& pause : ParseAnswer(answer).pauses)
            pauses.emplace_back(pause.keys, pause.echo, pause.follows_signal);
        EXPECT_EQ(pauses, expected) << answer;
    }
}

termios UsualModes() {
    constexpr std::pair<int, char> kKeys[] = {
        {VSTART, '\x11'},  {VSTOP, '\x13'},  {VERASE, '\x7f'},   {VKILL, '\x15'},
        {VWERASE, '\x17'}, {VLNEXT, '\x16'}, {VREPRINT, '\x12'}, {VEOF, '\4'},
        {VINTR, '\3'},     {VQUIT, '\x1c'},  {VSUSP, '\x1a'}};
    termios modes = {};
    modes.c_iflag = IUTF8 | IXON;
    for (const auto& [name, key] : kKeys) modes.c_cc[name] = static_cast<cc_t>(key);
    return modes;
}

TEST(LineEditorTest, EditsAsATerminalDoes) {
    const std::pair<const char*, const char*> typed[] = {
        {"abc\x7f", "ab"},        {"\x7f", ""},           {"Jos\u00e9\x7f", "Jos"},
        {"one two \x17", "one "}, {"one\x15two", "two"},  {"a\x13\x11", "a"},
        {"\x16\x13", "\x13"},     {"\x16\x15z", "\x15z"},
    };
    for (const auto& [keys, line] : typed) {
        LineEditor editor(UsualModes());
        for (const char key : std::string(keys)) editor.Add(key);
        EXPECT_EQ(editor.Line(), line) << keys;
    }
}

TEST(LineEditorTest, WrittenAnswerIsTypedAgain) {
    for (int byte = 0; byte <= 0xff; ++byte) {
        for (const std::string before : {"", "^", "\\"}) {
            const std::string line = before + static_cast<char>(byte);
            LineEditor editor(UsualModes());
            for (const char key : ParseAnswer(WriteAnswer(line)).keys) {
                if (editor.Classify(key) == LineEditor::Key::kText) editor.Add(key);
            }
            EXPECT_EQ(editor.Line(), line) << WriteAnswer(line);
        }
    }
}

TEST(LineEditorTest, RecognisesKeysThatAct) {
    using Key = LineEditor::Key;
    const std::pair<char, Key> keys[] = {
        {'x', Key::kText},          {'\r', Key::kEnter},       {'\n', Key::kEnter},
        {'\x04', Key::kEndOfInput}, {'\x03', Key::kInterrupt}, {'\x1c', Key::kInterrupt},
        {'\x1a', Key::kSuspend},    {'\x12', Key::kReprint},
    };
    LineEditor editor(UsualModes());
    for (const auto& [byte, key] : keys) EXPECT_EQ(editor.Classify(byte), key);
    editor.Add('\x16');
    EXPECT_EQ(editor.Classify('\x03'), Key::kText);
    termios without = UsualModes();
    without.c_cc[VINTR] = _POSIX_VDISABLE;
    EXPECT_EQ(LineEditor(without).Classify('\0'), Key::kText);
}

}  // namespace
}  // namespace play
