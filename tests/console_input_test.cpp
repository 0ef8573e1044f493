#include "console/console_input.h"

#include "console/console_output.h"
#include "support/captured_run.h"
#include "support/file_descriptor.h"
#include "support/messages.h"
#include "support/rival.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace morvane {
namespace {

using morvane_test::Dashes;
using morvane_test::Green;
using morvane_test::Heading;
using morvane_test::Normal;
using morvane_test::Red;
using morvane_test::Stars;

const std::string kMenuPrompt = Green("Path") + Red(" > ");
const std::string kValuePrompt = Green("Path") + Red(" ? ");
const std::string kInvalid = Red("Invalid value\n");
const std::string kAskedTwice = kValuePrompt + kInvalid + kValuePrompt;
const std::string kLeft = "4294967295";

// What was shown to an operator who typed `input`, and what came of it.
struct Answer {
    std::string shown;
    std::string result;
};

bool operator==(const Answer& one, const Answer& other) {
    return one.shown == other.shown && one.result == other.result;
}

void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << testing::PrintToString(answer.shown) << " = "
            << testing::PrintToString(answer.result);
}

Answer Ask(const std::function<std::string()>& ask, const std::string& input) {
    const std::string output =
        morvane_test::OutputOf([&] { PROXY_PrintNoPrompt("=", "%s", ask().c_str()); }, input);
    const std::size_t end = output.rfind('=');
    const std::size_t reset = output.size() - std::string(kNormal).size();
    return {output.substr(0, end), output.substr(end + 1, reset - end - 1)};
}

Answer AskKey(const std::string& input) {
    return Ask([] { return std::string(1, PROXY_MenuInput("Path")); }, input);
}

using AskForNumber = unsigned int (*)(const char* prompt, const char* title);

Answer AskNumber(AskForNumber ask, const std::string& input, const char* title = nullptr) {
    return Ask([&] { return std::to_string(ask("Path", title)); }, input);
}

Answer AskString(const std::string& input, unsigned int size, const char* title = nullptr) {
    const auto ask = [&] {
        std::array<char, 100> buffer = {};
        buffer.fill('!');
        const unsigned int count = PROXY_InputString("Path", title, buffer.data(), size);
        const bool within = buffer[size] == '!' && buffer[count] == '\0';
        return std::to_string(count) + (within ? " " : " out of bounds ") + buffer.data();
    };
    return Ask(ask, input);
}

struct Row {
    std::string input;
    Answer answer;
};

void ExpectNumbers(AskForNumber ask, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(AskNumber(ask, row.input), row.answer);
    }
}

TEST(MenuInputTest, TakesTheFirstCharacterThatIsNotBlank) {
    for (const std::string input : {"h\n", "  h\n", "\th\n", "help\n", "h e l p\n"}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(AskKey(input), (Answer{kMenuPrompt, "h"}));
    }
}

TEST(MenuInputTest, DistinguishesCase) {
    EXPECT_EQ(AskKey("Q\n"), (Answer{kMenuPrompt, "Q"}));
}

TEST(MenuInputTest, AsksAgainForABlankLineWithoutAWord) {
    EXPECT_EQ(AskKey("\nh\n"), (Answer{kMenuPrompt + kMenuPrompt, "h"}));
    EXPECT_EQ(AskKey(" \t \n\nh\n"), (Answer{kMenuPrompt + kMenuPrompt + kMenuPrompt, "h"}));
}

TEST(MenuInputTest, QuitsAtTheEndOfInput) {
    EXPECT_EQ(AskKey(""), (Answer{kMenuPrompt, "q"}));
    EXPECT_EQ(AskKey("\n"), (Answer{kMenuPrompt + kMenuPrompt, "q"}));
}

TEST(MenuInputTest, QuitsOnALastLineThatIsNotTerminated) {
    EXPECT_EQ(AskKey("h"), (Answer{kMenuPrompt, "q"}));
}

TEST(MenuInputTest, QuitsAgainAfterTheEndOfInput) {
    const auto ask = [] {
        std::string keys(1, PROXY_MenuInput("Path"));
        return keys + PROXY_MenuInput("Path");
    };
    EXPECT_EQ(Ask(ask, ""), (Answer{kMenuPrompt + kMenuPrompt, "qq"}));
}

TEST(MenuInputTest, TakesOneLineAtATime) {
    const auto ask = [] {
        std::string keys(1, PROXY_MenuInput("Path"));
        return keys + PROXY_MenuInput("Path");
    };
    EXPECT_EQ(Ask(ask, "abc\nx\n"), (Answer{kMenuPrompt + kMenuPrompt, "ax"}));
}

TEST(MenuInputTest, SleepsUntilATerminalThatDoesNotBlockGivesMore) {
    const auto ask = [] {
        const auto terminal = morvane_test::MakePipe(O_NONBLOCK);
        dup2(terminal.reader.Number(), STDIN_FILENO);
        std::string slept = "did not sleep";
        std::thread typist([&, asker = gettid()] {
            if (morvane_test::AwaitSleep(asker)) slept = "slept";
            EXPECT_EQ(write(terminal.writer.Number(), "h\n", 2), 2);
        });
        const char key = PROXY_MenuInput("Path");
        typist.join();
        return key + (" " + slept);
    };
    EXPECT_EQ(Ask(ask, ""), (Answer{kMenuPrompt, "h slept"}));
}

TEST(InputUint32Test, ReadsDecimalNumbers) {
    ExpectNumbers(PROXY_InputUint32, {{"0\n", {kValuePrompt, "0"}},
                                      {"12\n", {kValuePrompt, "12"}},
                                      {"  7\n", {kValuePrompt, "7"}},
                                      {"+5\n", {kValuePrompt, "5"}},
                                      {"007\n", {kValuePrompt, "7"}},
                                      {"12abc\n", {kValuePrompt, "12"}},
                                      {"1 2\n", {kValuePrompt, "1"}},
                                      {"0x10\n", {kValuePrompt, "0"}},
                                      {"4294967294\n", {kValuePrompt, "4294967294"}},
                                      {"4294967295\n", {kValuePrompt, kLeft}},
                                      {"-1\n", {kValuePrompt, kLeft}},
                                      {"-5\n", {kValuePrompt, "4294967291"}}});
}

TEST(InputUint32Test, IsLeftWithX) {
    for (const std::string input : {"x\n", "x5\n", "xyz\n", "x\n5\n"}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(AskNumber(PROXY_InputUint32, input), (Answer{kValuePrompt, kLeft}));
    }
}

TEST(InputUint32Test, IsLeftAtTheEndOfInput) {
    EXPECT_EQ(AskNumber(PROXY_InputUint32, ""), (Answer{kValuePrompt, kLeft}));
    EXPECT_EQ(AskNumber(PROXY_InputUint32, "12"), (Answer{kValuePrompt, kLeft}));
    EXPECT_EQ(AskNumber(PROXY_InputUint32, "what\n"), (Answer{kAskedTwice, kLeft}));
}

TEST(InputUint32Test, AsksAgainForWhatIsNoNumber) {
    for (const std::string input :
         {" x", "X", "abc", "ff", "-", " ", "\t", "4294967296", "-4294967296", "99999999999999"}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(AskNumber(PROXY_InputUint32, input + "\n3\n"), (Answer{kAskedTwice, "3"}));
    }
}

TEST(InputUint32Test, AsksAgainForAnEmptyLineWithoutAWord) {
    EXPECT_EQ(AskNumber(PROXY_InputUint32, "\n\n3\n"),
              (Answer{kValuePrompt + kValuePrompt + kValuePrompt, "3"}));
}

TEST(InputHexTest, ReadsHexadecimalNumbers) {
    ExpectNumbers(PROXY_InputHex, {{"ff\n", {kValuePrompt, "255"}},
                                   {"FF\n", {kValuePrompt, "255"}},
                                   {"10\n", {kValuePrompt, "16"}},
                                   {"0xff\n", {kValuePrompt, "255"}},
                                   {"0XFf\n", {kValuePrompt, "255"}},
                                   {" 1a\n", {kValuePrompt, "26"}},
                                   {"12g\n", {kValuePrompt, "18"}},
                                   {"ffffffff\n", {kValuePrompt, kLeft}},
                                   {"-1\n", {kValuePrompt, kLeft}}});
}

TEST(InputHexTest, IsLeftWithXAndAtTheEndOfInput) {
    for (const std::string input : {"x\n", "xff\n", "", "ff"}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(AskNumber(PROXY_InputHex, input), (Answer{kValuePrompt, kLeft}));
    }
}

TEST(InputHexTest, AsksAgainForWhatIsNoNumber) {
    for (const std::string input : {"g", " x", " ", "100000000"}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(AskNumber(PROXY_InputHex, input + "\n3\n"), (Answer{kAskedTwice, "3"}));
    }
    EXPECT_EQ(AskNumber(PROXY_InputHex, "\n3\n"), (Answer{kValuePrompt + kValuePrompt, "3"}));
}

TEST(NumberBoxTest, IsDrawnOnceAboveThePrompt) {
    const std::string box = Heading("How many") + Normal(" x) Exit this input\n") + Stars();
    for (const AskForNumber ask : {PROXY_InputUint32, PROXY_InputHex})
        EXPECT_EQ(AskNumber(ask, "what\n3\n", "How many"), (Answer{box + kAskedTwice, "3"}));
}

TEST(InputStringTest, KeepsALineThatFits) {
    EXPECT_EQ(AskString("some text\n", 21), (Answer{kValuePrompt, "9 some text"}));
    EXPECT_EQ(AskString("  blanks kept \n", 21), (Answer{kValuePrompt, "14   blanks kept "}));
    EXPECT_EQ(AskString("x\n", 21), (Answer{kValuePrompt, "1 x"}));
}

TEST(InputStringTest, CutsALineThatDoesNot) {
    const std::string line = "123456789012345678901234567890";
    EXPECT_EQ(AskString(line + "\n", 21), (Answer{kValuePrompt, "20 " + line.substr(0, 20)}));
    EXPECT_EQ(AskString(line.substr(0, 20) + "\n", 21),
              (Answer{kValuePrompt, "20 " + line.substr(0, 20)}));
    EXPECT_EQ(AskString("text\n", 1), (Answer{kValuePrompt, "0 "}));
}

TEST(InputStringTest, DropsTheRestOfALineThatWasCut) {
    const auto ask = [] {
        std::array<char, 3> buffer = {};
        PROXY_InputString("Path", nullptr, buffer.data(), buffer.size());
        return std::string(buffer.data()) + PROXY_MenuInput("Path");
    };
    EXPECT_EQ(Ask(ask, "abcdef\ny\n"), (Answer{kValuePrompt + kMenuPrompt, "aby"}));
}

TEST(InputStringTest, AcceptsAnEmptyLine) {
    EXPECT_EQ(AskString("\n", 21), (Answer{kValuePrompt, "0 "}));
}

TEST(InputStringTest, ReadsTheEndOfInputAsAnEmptyLine) {
    EXPECT_EQ(AskString("", 21), (Answer{kValuePrompt, "0 "}));
}

TEST(InputStringTest, KeepsALastLineThatIsNotTerminated) {
    EXPECT_EQ(AskString("text", 21), (Answer{kValuePrompt, "4 text"}));
}

TEST(InputStringTest, DrawsItsTitleWithoutAWayOut) {
    EXPECT_EQ(AskString("text\n", 21, "Enter it"),
              (Answer{Stars() + Normal(" Enter it\n") + Stars() + kValuePrompt, "4 text"}));
}

TEST(InputStringTest, DrawsABoxForAnEmptyTitle) {
    EXPECT_EQ(AskString("text\n", 21, ""),
              (Answer{Stars() + Normal(" \n") + Stars() + kValuePrompt, "4 text"}));
}

TEST(InputStringTest, DoesNothingWithoutPromptBufferOrRoom) {
    const auto ask = [] {
        std::array<char, 4> buffer = {'!'};
        const unsigned int sum = PROXY_InputString(nullptr, "Title", buffer.data(), 4) +
                                 PROXY_InputString("Path", "Title", nullptr, 4) +
                                 PROXY_InputString("Path", "Title", buffer.data(), 0);
        return std::to_string(sum) + buffer[0];
    };
    EXPECT_EQ(Ask(ask, "text\n"), (Answer{"", "0!"}));
}

TEST(StandingPromptTest, IsGoneWhenTheLineHasCome) {
    char buffer[8];
    const std::vector<std::function<void()>> inputs = {
        [] { static_cast<void>(PROXY_MenuInput("Path")); },
        [] { static_cast<void>(PROXY_InputUint32("Path", nullptr)); },
        [] { static_cast<void>(PROXY_InputHex("Path", nullptr)); },
        [&] { PROXY_InputString("Path", nullptr, buffer, sizeof buffer); }};
    for (const auto& input : inputs) {
        const auto ask = [&] {
            input();
            PROXY_Print(kNormal, "after\n");
            return std::string();
        };
        const std::string shown = Ask(ask, "1\n").shown;
        EXPECT_EQ(shown.substr(shown.size() - Normal("after\n").size() - 1),
                  "m" + Normal("after\n"));
    }
}

TEST(InputEndedTest, TurnsTrueWithTheEnd) {
    const auto ask = [] {
        std::string ended(PROXY_InputEnded() ? "y" : "n");
        static_cast<void>(PROXY_MenuInput("Path"));
        ended += PROXY_InputEnded() ? "y" : "n";
        static_cast<void>(PROXY_MenuInput("Path"));
        return ended + (PROXY_InputEnded() ? "y" : "n");
    };
    EXPECT_EQ(Ask(ask, "h\n").result, "nny");
}

}  // namespace
}  // namespace morvane
