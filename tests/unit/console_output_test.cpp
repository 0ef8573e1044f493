#include "console/console_output.h"

#include "support/file_descriptor.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/competing_thread.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace morvane_test {
namespace {

using morvane::kGreen;
using morvane::kNormal;
using morvane::kRed;
using morvane::PROXY_Input;
using morvane::PROXY_Print;
using morvane::PROXY_Prompt;

using Writes = std::vector<std::string>;

// The writes of `function` while the prompt "Path" is displayed, without those of the prompt.
Writes WritesWithPrompt(const std::function<void(const char*, int)>& show_prompt,
                        const std::function<void()>& function) {
    Writes writes = WritesOf([&] {
        show_prompt("Path", 1);
        function();
    });
    EXPECT_EQ(writes.front(), Green("Path"));
    writes.erase(writes.begin(), writes.begin() + 2);
    return writes;
}

const std::string kRedrawn = "\x1b[1;32mPath\x1b[1;31m > \x1b[0m";

TEST(PrintTest, WritesColourTextAndResetInOneWrite) {
    EXPECT_EQ(WritesOf([] { PROXY_Print(kNormal, " %d) %s %x%%\n", -1, "name", 0xABU); }),
              Writes{"\x1b[0m -1) name ab%\n\x1b[0m"});
    EXPECT_EQ(WritesOf([] { PROXY_Print(kGreen, "%s", ""); }), Writes{Green("")});
}

TEST(PrintTest, PrintsNothingIfFormattingFails) {
    // The C locale has no multibyte encoding of this character.
    EXPECT_EQ(WritesOf([] { EXPECT_LT(PROXY_Print(kRed, "text %lc", L'\u20AC'), 0); }), Writes{});
}

TEST(PrintTest, TruncatesTo999Bytes) {
    for (const std::size_t length : {998U, 999U, 1000U, 5000U}) {
        SCOPED_TRACE(length);
        const std::string text(length, 'x');
        const std::string kept = text.substr(0, 999);
        EXPECT_EQ(WritesOf([&] { PROXY_Print(kGreen, "%s", text.c_str()); }), Writes{Green(kept)});
        EXPECT_EQ(WritesOf([&] { morvane::PROXY_PrintNoPrompt(kGreen, "%s", text.c_str()); }),
                  Writes{Green(kept)});
        EXPECT_EQ(WritesWithPrompt(PROXY_Prompt, [&] { PROXY_Print(kRed, "%s", text.c_str()); }),
                  Writes{"\n\x1b[1;31m" + kept + kRedrawn});
    }
}

TEST(PrintTest, RedrawsFirst100BytesOfPromptAfterLongestText) {
    const std::string text(999, 'x');
    for (const std::size_t length : {99U, 100U, 101U, 300U}) {
        SCOPED_TRACE(length);
        const std::string path(length, 'p');
        const Writes writes = WritesOf([&] {
            PROXY_Prompt(path.c_str(), 1);
            PROXY_Print(kGreen, "%s", text.c_str());
        });
        EXPECT_EQ(writes.front(), Green(path));
        EXPECT_EQ(writes.back(), "\n\x1b[1;32m" + text + "\x1b[1;32m" + path.substr(0, 100) +
                                     "\x1b[1;31m > \x1b[0m");
    }
}

// Writes until the pipe is full; returns the number of bytes.
std::size_t Fill(int descriptor) {
    const std::string page(4096, 'x');
    std::size_t filled = 0;
    for (ssize_t count; (count = write(descriptor, page.data(), page.size())) > 0;)
        filled += static_cast<std::size_t>(count);
    return filled;
}

std::string Read(int descriptor, std::size_t most) {
    std::string text(most, '\0');
    const ssize_t count = read(descriptor, text.data(), text.size());
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

TEST(PrintTest, SleepsUntilNonBlockingOutputIsWritable) {
    const auto print = [] {
        const auto terminal = MakePipe(O_NONBLOCK);
        const FileDescriptor output(dup(STDOUT_FILENO));
        dup2(terminal.writer.Number(), STDOUT_FILENO);
        const std::size_t filled = Fill(STDOUT_FILENO);
        bool slept = false;
        std::thread reader([&, printer = gettid()] {
            slept = AwaitSleep(printer);
            Read(terminal.reader.Number(), filled);
        });
        PROXY_Print(kGreen, "text\n");
        reader.join();
        dup2(output.Number(), STDOUT_FILENO);
        if (!slept) PROXY_Print(kRed, "polled\n");
        const std::string text = Read(terminal.reader.Number(), 100);
        EXPECT_GT(write(STDOUT_FILENO, text.data(), text.size()), 0);
    };
    EXPECT_EQ(WritesOf(print), Writes{Green("text\n")});
}

TEST(PrintNoPromptTest, DoesNotRedrawThePrompt) {
    EXPECT_EQ(WritesWithPrompt(PROXY_Prompt,
                               [] { morvane::PROXY_PrintNoPrompt(kRed, "%s %d\n", "code", 7); }),
              Writes{Red("code 7\n")});
}

// Path and marker are printed like messages: each redraws the displayed prompt, which is already
// the new one.
TEST(PromptTest, RedrawsIfAPromptIsAlreadyDisplayed) {
    EXPECT_EQ(WritesWithPrompt(PROXY_Prompt, [] { PROXY_Input("Other", 1); }),
              (Writes{"\n\x1b[1;32mOther\x1b[1;32mOther\x1b[1;31m > \x1b[0m",
                      "\n\x1b[1;31m ? \x1b[1;32mOther\x1b[1;31m > \x1b[0m"}));
}

TEST(PromptTest, IsNotDrawnIfNumberIsNotOne) {
    for (const auto show_prompt : {PROXY_Prompt, PROXY_Input})
        EXPECT_EQ(WritesOf([&] {
                      show_prompt("", 0);
                      show_prompt("Path", 2);
                      PROXY_Print(kNormal, "news\n");
                  }),
                  Writes{"\n\x1b[0mnews\n" + kRedrawn});
}

struct ConsoleCall {
    const char* name;
    std::function<void()> make;
};

const std::vector<ConsoleCall> kCalls = {
    {"Print", [] { PROXY_Print(kNormal, "printed\n"); }},
    {"PrintNoPrompt", [] { morvane::PROXY_PrintNoPrompt(morvane::kRed, "printed directly\n"); }},
    {"Prompt", [] { PROXY_Prompt("Path", 1); }},
    {"Input", [] { morvane::PROXY_Input("Path", 1); }},
    {"HidePrompt", [] { PROXY_Prompt("", 0); }}};

// The writes of `act` and of a message after it, which shows whether a prompt is displayed.
Writes WritesAndState(const std::function<void()>& act) {
    return WritesOf([&] {
        act();
        PROXY_Print(kNormal, "after\n");
    });
}

// Makes the call `second` on another thread during write number `interrupted` of `first`. Whenever
// `first` releases the lock, `second` continues at once: it has the higher priority.
Writes WritesOfBoth(const ConsoleCall& first, const ConsoleCall& second, std::size_t interrupted) {
    return WritesAndState([&] {
        PinToOneProcessor();
        CompetingThread competitor(second.make);
        std::atomic<std::size_t> count{0};
        write_substitute = [&](const void* bytes, std::size_t size) {
            if (count++ == interrupted) {
                competitor.RunUntilBlocked();
                LowerPriority();
            }
            return RealWrite(bytes, size);
        };
        first.make();
        competitor.Join();
        write_substitute = nullptr;
    });
}

void ExpectSequentialWrites(const ConsoleCall& first, const ConsoleCall& second) {
    const Writes sequential = WritesAndState([&] {
        first.make();
        second.make();
    });
    const std::size_t writes = WritesOf(first.make).size();
    for (std::size_t i = 0; i < writes; ++i)
        EXPECT_EQ(WritesOfBoth(first, second, i), sequential)
            << second.name << " during write " << i << " of " << first.name;
}

class ConsoleThreadsTest : public testing::TestWithParam<ConsoleCall> {};

TEST_P(ConsoleThreadsTest, WritesOfTwoThreadsDoNotInterleave) {
    const ConsoleCall& call = GetParam();
    const ConsoleCall under_prompt = {call.name, [&] {
                                          PROXY_Prompt("Shown", 2);
                                          call.make();
                                      }};
    for (const ConsoleCall& second : kCalls) {
        ExpectSequentialWrites(call, second);
        ExpectSequentialWrites(under_prompt, second);
    }
}

INSTANTIATE_TEST_SUITE_P(Console, ConsoleThreadsTest, testing::ValuesIn(kCalls),
                         [](const auto& test) { return std::string(test.param.name); });

// No message may be printed between the last write of a prompt and the update of the flag that
// marks it as displayed. A preemption there is only likely, hence several attempts.
TEST(PromptTest, IsDrawnAndStoredAtomically) {
    const Writes printed_after = {Green("Path"), Red(" > "), "\n\x1b[0mprinted\n" + kRedrawn,
                                  "\n\x1b[0mafter\n" + kRedrawn};
    const ConsoleCall& print = kCalls[0];
    const ConsoleCall& prompt = kCalls[2];
    for (int attempt = 0; attempt < 20; ++attempt)
        ASSERT_EQ(WritesOfBoth(prompt, print, 1), printed_after);
}

// The output if the first write(2) returns `result` with `error` in errno; a positive result
// writes that number of bytes.
std::string OutputAfter(ssize_t result, int error) {
    return OutputOf([&] {
        write_substitute = [&](const void* bytes, std::size_t /*count*/) {
            write_substitute = nullptr;
            errno = error;
            return result > 0 ? RealWrite(bytes, static_cast<std::size_t>(result)) : result;
        };
        PROXY_Print(kNormal, "one\n");
        PROXY_Print(kNormal, "two\n");
    });
}

TEST(WriteTest, RetriesShortWritesAndRetryableErrorsElseDropsMessage) {
    const std::string one = Normal("one\n");
    const std::string two = Normal("two\n");
    EXPECT_EQ(OutputAfter(6, 0), one + two);
    EXPECT_EQ(OutputAfter(-1, EINTR), one + two);
    EXPECT_EQ(OutputAfter(-1, EAGAIN), one + two);
    EXPECT_EQ(OutputAfter(-1, EIO), two);
}

}  // namespace
}  // namespace morvane_test
