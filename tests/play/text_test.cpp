// How lines and answers are written into a file and read from it.

#include "play/answer.h"
#include "play/line_editor.h"
#include "play/pattern.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

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

TEST(PatternTest, WritesWildcardsForWhatVaries) {
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

TEST(AnswerTest, ReadsControlKeys) {
    const Answer answer = ParseAnswer("^Aa^[^V^C^V^?");
    EXPECT_EQ(answer.keys,
              "\x01"
              "a\x1b\x16\x03\x16\x7f\n");
    EXPECT_EQ(answer.echo, "^Aa^[^C^?");
    EXPECT_EQ(ParseAnswer("^C\\").keys, "\x03\n");
}

TEST(AnswerTest, KeysActWithoutEnter) {
    EXPECT_EQ(ParseAnswer("^D").keys, "\x04");
    EXPECT_EQ(ParseAnswer("^C").keys, "\x03");
    EXPECT_EQ(ParseAnswer("^C^\\").keys, "\x03\x1c");
    EXPECT_EQ(ParseAnswer("^Cq").keys, "\x03q\n");
    EXPECT_EQ(ParseAnswer("^Cq").echo, "^Cq");
}

termios UsualModes() {
    termios modes = {};
    modes.c_iflag = IUTF8 | IXON;
    modes.c_cc[VSTART] = '\x11';
    modes.c_cc[VSTOP] = '\x13';
    modes.c_cc[VERASE] = '\x7f';
    modes.c_cc[VKILL] = '\x15';
    modes.c_cc[VWERASE] = '\x17';
    modes.c_cc[VLNEXT] = '\x16';
    modes.c_cc[VREPRINT] = '\x12';
    modes.c_cc[VEOF] = '\x04';
    modes.c_cc[VINTR] = '\x03';
    modes.c_cc[VQUIT] = '\x1c';
    modes.c_cc[VSUSP] = '\x1a';
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
