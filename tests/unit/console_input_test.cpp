#include "console/console_input.h"

#include "console/console_output.h"
#include "support/file_descriptor.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"

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

using morvane_test::Green;
using morvane_test::Heading;
using morvane_test::Normal;
using morvane_test::Red;
using morvane_test::Stars;

const std::string kMenuPrompt = Green("Path") + Red(" > ");
const std::string kValuePrompt = Green("Path") + Red(" ? ");
const std::string kAskedAgain = kValuePrompt + Red("Invalid value\n") + kValuePrompt;
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

struct InputRow {
    std::string input;
    Answer answer;
};

void ExpectAnswers(const std::function<std::string()>& ask, const std::vector<InputRow>& rows) {
    for (const InputRow& row : rows)
        EXPECT_EQ(Ask(ask, row.input), row.answer) << testing::PrintToString(row.input);
}

std::string AskKey() {
    return {PROXY_MenuInput("Path")};
}

using AskForNumber = unsigned int (*)(const char* prompt, const char* title);

template <AskForNumber kAsk>
std::string AskNumber() {
    return std::to_string(kAsk("Path", nullptr));
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

TEST(MenuInputTest, ReturnsTheFirstCharacterThatIsNotBlank) {
    ExpectAnswers(AskKey, {{"h\n", {kMenuPrompt, "h"}},
                           {"  h\n", {kMenuPrompt, "h"}},
                           {"\th\n", {kMenuPrompt, "h"}},
                           {"help\n", {kMenuPrompt, "h"}},
                           {"h e l p\n", {kMenuPrompt, "h"}},
                           {"Q\n", {kMenuPrompt, "Q"}}});
}

TEST(MenuInputTest, AsksAgainAfterABlankLineWithoutAMessage) {
    ExpectAnswers(AskKey, {{"\nh\n", {kMenuPrompt + kMenuPrompt, "h"}},
                           {" \t \n\nh\n", {kMenuPrompt + kMenuPrompt + kMenuPrompt, "h"}}});
}

TEST(MenuInputTest, QuitsAtTheEndOfInputAndOnAnUnterminatedLine) {
    ExpectAnswers(AskKey, {{"", {kMenuPrompt, "q"}},
                           {"\n", {kMenuPrompt + kMenuPrompt, "q"}},
                           {"h", {kMenuPrompt, "q"}}});
}

TEST(MenuInputTest, ReadsOneLineAtATimeAndReportsTheEnd) {
    const auto state = [] { return PROXY_InputEnded() ? "." : " "; };
    const auto ask = [&] {
        std::string keys = state();
        for (int round = 0; round < 2; ++round) {
            keys += PROXY_MenuInput("Path");
            keys += state();
        }
        return keys;
    };
    const std::string prompts = kMenuPrompt + kMenuPrompt;
    ExpectAnswers(
        ask,
        {{"abc\nx\n", {prompts, " a x "}}, {"h\n", {prompts, " h q."}}, {"", {prompts, " q.q."}}});
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
    ExpectAnswers(AskNumber<PROXY_InputUint32>, {{"0\n", {kValuePrompt, "0"}},
                                                 {"12\n", {kValuePrompt, "12"}},
                                                 {"  7\n", {kValuePrompt, "7"}},
                                                 {"12abc\n", {kValuePrompt, "12"}},
                                                 {"0x10\n", {kValuePrompt, "0"}},
                                                 {"4294967295\n", {kValuePrompt, kLeft}},
                                                 {"-1\n", {kValuePrompt, kLeft}},
                                                 {"-5\n", {kValuePrompt, "4294967291"}}});
}

TEST(InputHexTest, ReadsHexadecimalNumbers) {
    ExpectAnswers(AskNumber<PROXY_InputHex>, {{"ff\n", {kValuePrompt, "255"}},
                                              {"10\n", {kValuePrompt, "16"}},
                                              {"0XFf\n", {kValuePrompt, "255"}},
                                              {" 1a\n", {kValuePrompt, "26"}},
                                              {"12g\n", {kValuePrompt, "18"}},
                                              {"ffffffff\n", {kValuePrompt, kLeft}}});
}

const std::function<std::string()> kNumberReaders[] = {AskNumber<PROXY_InputUint32>,
                                                       AskNumber<PROXY_InputHex>};

TEST(NumberInputTest, IsLeftWithXAndAtTheEndOfInput) {
    for (const auto& ask : kNumberReaders)
        for (const char* const input : {"x\n", "x5\n", "xyz\n", "x\n5\n", "", "12"})
            ExpectAnswers(ask, {{input, {kValuePrompt, kLeft}}});
}

TEST(NumberInputTest, AsksAgainForWhatIsNoNumber) {
    for (const auto& ask : kNumberReaders) {
        for (const std::string input : {" x", "X", "g", "-", " ", "\t", "-4294967296"})
            ExpectAnswers(ask, {{input + "\n3\n", {kAskedAgain, "3"}}});
        ExpectAnswers(ask, {{"what\n", {kAskedAgain, kLeft}},
                            {"\n\n3\n", {kValuePrompt + kValuePrompt + kValuePrompt, "3"}}});
    }
    ExpectAnswers(kNumberReaders[0], {{"ff\n3\n", {kAskedAgain, "3"}}});
}

TEST(NumberBoxTest, IsDrawnOnceAboveThePrompt) {
    const std::string box = Heading("How many") + Normal(" x) Exit this input\n") + Stars();
    for (const AskForNumber ask : {PROXY_InputUint32, PROXY_InputHex})
        ExpectAnswers([ask] { return std::to_string(ask("Path", "How many")); },
                      {{"what\n3\n", {box + kAskedAgain, "3"}}});
}

TEST(InputStringTest, KeepsOfALineWhatFits) {
    const std::string begin = "12345678901234567890";
    struct {
        std::string input;
        unsigned int size;
        std::string result;
    } const rows[] = {{"some text\n", 21, "9 some text"},
                      {"  blanks kept \n", 21, "14   blanks kept "},
                      {"x\n", 21, "1 x"},
                      {begin + "1234567890\n", 21, "20 " + begin},
                      {begin + "\n", 21, "20 " + begin},
                      {"text\n", 1, "0 "},
                      {"\n", 21, "0 "},
                      {"", 21, "0 "},
                      {"text", 21, "4 text"}};
    for (const auto& row : rows)
        EXPECT_EQ(AskString(row.input, row.size), (Answer{kValuePrompt, row.result})) << row.input;
}

TEST(InputStringTest, DropsTheRestOfATruncatedLine) {
    const auto ask = [] {
        std::array<char, 3> buffer = {};
        PROXY_InputString("Path", nullptr, buffer.data(), buffer.size());
        return std::string(buffer.data()) + PROXY_MenuInput("Path");
    };
    ExpectAnswers(ask, {{"abcdef\ny\n", {kValuePrompt + kMenuPrompt, "aby"}}});
}

TEST(InputStringTest, DrawsItsTitleInABoxWithoutAKeyToLeave) {
    for (const std::string title : {"Enter it", ""})
        EXPECT_EQ(
            AskString("text\n", 21, title.c_str()),
            (Answer{Stars() + Normal(" " + title + "\n") + Stars() + kValuePrompt, "4 text"}));
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

TEST(StandingPromptTest, IsNotRedrawnOnceALineWasRead) {
    char buffer[8];
    for (const std::function<void()>& input : std::vector<std::function<void()>>{
             AskKey, kNumberReaders[0], kNumberReaders[1],
             [&] { PROXY_InputString("Path", nullptr, buffer, sizeof buffer); }}) {
        const auto ask = [&] {
            input();
            PROXY_Print(kNormal, "after\n");
            return std::string();
        };
        const std::string shown = Ask(ask, "1\n").shown;
        const std::string end = "m" + Normal("after\n");
        EXPECT_EQ(shown.substr(shown.size() - end.size()), end);
    }
}

}  // namespace
}  // namespace morvane
