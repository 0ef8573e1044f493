#include "console/console_input.h"

#include "console/console_output.h"
#include "support/file_descriptor.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/competing_thread.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <string>
#include <thread>

namespace morvane_test {
namespace {

using morvane::PROXY_InputHex;
using morvane::PROXY_InputString;
using morvane::PROXY_InputUint32;
using morvane::PROXY_MenuInput;

const std::string kMenuPrompt = Green("Path") + Red(" > ");
const std::string kInputPrompt = Green("Path") + Red(" ? ");
const std::string kAskedAgain = kInputPrompt + Red("Invalid value\n") + kInputPrompt;
const std::string kCancelled = "4294967295";

// The output of `ask` for this typed input, followed by what it returns.
std::string Asked(const std::function<std::string()>& ask, const std::string& input) {
    return OutputOf([&] { morvane::PROXY_PrintNoPrompt("= ", "%s", ask().c_str()); }, input);
}

std::string Answered(const std::string& shown, const std::string& result) {
    return shown + "= " + result + kResetSequence;
}

TEST(MenuInputTest, ReturnsFirstNonBlankCharacterOrQAtEndOfInput) {
    struct {
        const char* input;
        std::string shown;
        const char* key;
    } const rows[] = {{"h e l p\n", kMenuPrompt, "h"},
                      {" \th\n", kMenuPrompt, "h"},
                      {"Q\n", kMenuPrompt, "Q"},
                      {" \t \n\nh\n", kMenuPrompt + kMenuPrompt + kMenuPrompt, "h"},
                      {"\n", kMenuPrompt + kMenuPrompt, "q"},
                      {"h", kMenuPrompt, "q"}};
    for (const auto& row : rows)
        EXPECT_EQ(Asked([] { return std::string{PROXY_MenuInput("Path")}; }, row.input),
                  Answered(row.shown, row.key));
}

TEST(MenuInputTest, SleepsUntilNonBlockingInputIsReadable) {
    const auto ask = [] {
        const auto terminal = MakePipe(O_NONBLOCK);
        dup2(terminal.reader.Number(), STDIN_FILENO);
        std::string slept = "polled";
        std::thread typist([&, asker = gettid()] {
            if (AwaitSleep(asker)) slept = "slept";
            EXPECT_EQ(write(terminal.writer.Number(), "h\n", 2), 2);
        });
        const char key = PROXY_MenuInput("Path");
        typist.join();
        return key + (" " + slept);
    };
    EXPECT_EQ(Asked(ask, ""), Answered(kMenuPrompt, "h slept"));
}

TEST(InputEndedTest, IsTrueAfterEndOfInputWasRead) {
    const auto ask = [] {
        std::string keys;
        for (int round = 0; round < 3; ++round) {
            keys += morvane::PROXY_InputEnded() ? '.' : ' ';
            keys += PROXY_MenuInput("Path");
        }
        return keys;
    };
    EXPECT_EQ(Asked(ask, "abc\n"), Answered(kMenuPrompt + kMenuPrompt + kMenuPrompt, " a q.q"));
}

struct NumberRow {
    std::string input;
    std::string shown;
    std::string decimal;
    std::string hexadecimal;
};

const NumberRow kNumberRows[] = {
    {"10\n", kInputPrompt, "10", "16"},
    {"0x1F\n", kInputPrompt, "0", "31"},
    {"x5\n", kInputPrompt, kCancelled, kCancelled},
    {"", kInputPrompt, kCancelled, kCancelled},
    {"12", kInputPrompt, kCancelled, kCancelled},
    {" x\n3\n", kAskedAgain, "3", "3"},
    {"what\n", kAskedAgain, kCancelled, kCancelled},
    {" \n3\n", kAskedAgain, "3", "3"},
    {"\n\n3\n", kInputPrompt + kInputPrompt + kInputPrompt, "3", "3"},
};

TEST(NumberInputTest, AsksAgainUntilNumberOrCancel) {
    const std::string box = Heading("Title") + Normal(" x) Exit this input\n") + Stars();
    for (const NumberRow& row : kNumberRows) {
        for (const char* const title : {static_cast<const char*>(nullptr), "Title"}) {
            const std::string shown = (title == nullptr ? "" : box) + row.shown;
            EXPECT_EQ(
                Asked([&] { return std::to_string(PROXY_InputUint32("Path", title)); }, row.input),
                Answered(shown, row.decimal));
            EXPECT_EQ(
                Asked([&] { return std::to_string(PROXY_InputHex("Path", title)); }, row.input),
                Answered(shown, row.hexadecimal));
        }
    }
}

TEST(InputStringTest, TruncatesLineToBufferSize) {
    const std::string prefix = "12345678901234567890";
    struct {
        std::string input;
        unsigned int size;
        std::string result;
    } const rows[] = {{"  blanks kept \n", 21, "14   blanks kept "},
                      {"x\n", 21, "1 x"},
                      {prefix + "1234567890\n", 21, "20 " + prefix},
                      {prefix + "\n", 21, "20 " + prefix},
                      {"text\n", 1, "0 "},
                      {"", 21, "0 "},
                      {"text", 21, "4 text"}};
    for (const auto& row : rows) {
        const auto ask = [&] {
            std::array<char, 100> buffer = {};
            buffer.fill('!');
            const unsigned int count = PROXY_InputString("Path", nullptr, buffer.data(), row.size);
            const bool within = buffer[row.size] == '!' && buffer[count] == '\0';
            return std::to_string(count) + (within ? " " : " out of bounds ") + buffer.data();
        };
        EXPECT_EQ(Asked(ask, row.input), Answered(kInputPrompt, row.result)) << row.input;
    }
}

TEST(InputStringTest, ReturnsZeroWithoutPromptBufferOrSize) {
    const auto ask = [] {
        std::array<char, 4> buffer = {'!'};
        const unsigned int sum = PROXY_InputString(nullptr, "Title", buffer.data(), 4) +
                                 PROXY_InputString("Path", "Title", nullptr, 4) +
                                 PROXY_InputString("Path", "Title", buffer.data(), 0);
        return std::to_string(sum) + buffer[0];
    };
    EXPECT_EQ(Asked(ask, "text\n"), Answered("", "0!"));
}

}  // namespace
}  // namespace morvane_test
