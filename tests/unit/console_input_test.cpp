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
#include <utility>

// What is read from any input is compared with a model in fuzz/console_input.cpp.

namespace morvane_test {
namespace {

using morvane::PROXY_InputHex;
using morvane::PROXY_InputString;
using morvane::PROXY_InputUint32;
using morvane::PROXY_MenuInput;

const std::string kMenuPrompt = Green("Path") + Red(" > ");
const std::string kInputPrompt = Green("Path") + Red(" ? ");

// The output of `ask` for this typed input, followed by what it returns.
std::string Asked(const std::function<std::string()>& ask, const std::string& input) {
    return OutputOf([&] { morvane::PROXY_PrintNoPrompt("= ", "%s", ask().c_str()); }, input);
}

std::string Answered(const std::string& shown, const std::string& result) {
    return shown + "= " + result + kResetSequence;
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

TEST(NumberInputTest, DisplaysTitleOnce) {
    const std::string box = Heading("Title") + Normal(" x) Exit this input\n") + Stars();
    const auto shown = Answered(box + kInputPrompt + Red("Invalid value\n") + kInputPrompt, "16");
    EXPECT_EQ(Asked([] { return std::to_string(PROXY_InputUint32("Path", "Title")); }, "z\n16\n"),
              shown);
    EXPECT_EQ(Asked([] { return std::to_string(PROXY_InputHex("Path", "Title")); }, "z\n10\n"),
              shown);
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
