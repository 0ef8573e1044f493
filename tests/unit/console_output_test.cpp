#include "console/console_output.h"

#include "support/file_descriptor.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
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

// What comes of `function` while the prompt "Path" stands.
Writes WritesUnderPrompt(const std::function<void(const char*, int)>& show_prompt,
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

TEST(PrintTest, WritesColourTextAndResetAtOnce) {
    EXPECT_EQ(WritesOf([] { PROXY_Print(kNormal, " %d) %s %x%%\n", -1, "name", 0xABU); }),
              Writes{"\x1b[0m -1) name ab%\n\x1b[0m"});
    EXPECT_EQ(WritesOf([] { PROXY_Print(kGreen, "%s", ""); }), Writes{Green("")});
}

TEST(PrintTest, PrintsNothingThatCannotBeFormatted) {
    // In the C locale there is no multibyte character for this one.
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
        EXPECT_EQ(WritesUnderPrompt(PROXY_Prompt, [&] { PROXY_Print(kRed, "%s", text.c_str()); }),
                  Writes{"\n\x1b[1;31m" + kept + kRedrawn});
    }
}

TEST(PrintTest, RedrawsTheFirst100BytesOfAPromptAlsoBelowTheLongestText) {
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

// Until nothing more fits; returns how much did.
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

TEST(PrintTest, SleepsUntilAFullTerminalThatDoesNotBlockTakesMore) {
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
        if (!slept) PROXY_Print(kRed, "did not sleep\n");
        const std::string came = Read(terminal.reader.Number(), 100);
        EXPECT_GT(write(STDOUT_FILENO, came.data(), came.size()), 0);
    };
    EXPECT_EQ(WritesOf(print), Writes{Green("text\n")});
}

TEST(PrintNoPromptTest, IgnoresAStandingPrompt) {
    EXPECT_EQ(WritesUnderPrompt(PROXY_Prompt,
                                [] { morvane::PROXY_PrintNoPrompt(kRed, "%s %d\n", "code", 7); }),
              Writes{Red("code 7\n")});
}

// Path and marker are messages like others: each moves the prompt that stands, by then the new one.
TEST(PromptTest, IsDrawnUnderAPromptThatStandsAlready) {
    EXPECT_EQ(WritesUnderPrompt(PROXY_Prompt, [] { PROXY_Input("Other", 1); }),
              (Writes{"\n\x1b[1;32mOther\x1b[1;32mOther\x1b[1;31m > \x1b[0m",
                      "\n\x1b[1;31m ? \x1b[1;32mOther\x1b[1;31m > \x1b[0m"}));
}

TEST(PromptTest, IsNotDrawnWithAnotherNumberThanOne) {
    for (const auto show_prompt : {PROXY_Prompt, PROXY_Input})
        EXPECT_EQ(WritesOf([&] {
                      show_prompt("", 0);
                      show_prompt("Path", 2);
                      PROXY_Print(kNormal, "news\n");
                  }),
                  Writes{"\n\x1b[0mnews\n" + kRedrawn});
}

// Messages of the other thread, at any moment while a prompt is drawn.
class PromptRaceTest : public testing::TestWithParam<void (*)(const char*, int)> {
  protected:
    static constexpr int kRounds = 2000;

    // One round after the other: the prompt is drawn, the message has come, the prompt is taken
    // away.
    static void DrawPrompts() {
        StayOnOneProcessor();
        Pipe begin = MakePipe();
        Pipe end = MakePipe();
        std::thread other([&] {
            for (int round = 0; round < kRounds; ++round) SayNewsAfterAWhile(begin, end, round);
        });
        StayBehindOtherThreads();
        for (int round = 0; round < kRounds; ++round) {
            Tell(begin);
            GetParam()("Path", 1);
            Await(end);
            PROXY_Prompt("", 0);
            PROXY_Print(kNormal, "done\n");
        }
        other.join();
    }

  private:
    static void SayNewsAfterAWhile(Pipe& begin, Pipe& end, int round) {
        prctl(PR_SET_TIMERSLACK, 1);
        Await(begin);
        std::this_thread::sleep_for(std::chrono::microseconds(round % 40));
        PROXY_Print(kNormal, "news\n");
        Tell(end);
    }

    static void Tell(Pipe& pipe) { ASSERT_EQ(write(pipe.writer.Number(), "", 1), 1); }
    static void Await(Pipe& pipe) {
        char byte = 0;
        ASSERT_EQ(read(pipe.reader.Number(), &byte, 1), 1);
    }
};

TEST_P(PromptRaceTest, EachComesBeforeThePromptOrHasItDrawnAgain) {
    const Writes writes = WritesOf(DrawPrompts);
    bool prompt_stands = false;
    for (std::size_t i = 0; i < writes.size(); ++i) {
        if (writes[i] == Green("Path")) prompt_stands = true;
        if (writes[i] == Normal("done\n")) prompt_stands = false;
        ASSERT_FALSE(prompt_stands && writes[i] == Normal("news\n")) << "write " << i;
    }
    EXPECT_EQ(writes.size(), 4U * kRounds);
}

INSTANTIATE_TEST_SUITE_P(, PromptRaceTest, testing::Values(PROXY_Prompt, PROXY_Input));

struct ConsoleCall {
    const char* name;
    std::function<void()> make;
};

const std::vector<ConsoleCall> kCalls = {
    {"Print", [] { PROXY_Print(kNormal, "printed\n"); }},
    {"PrintNoPrompt", [] { morvane::PROXY_PrintNoPrompt(morvane::kRed, "printed beside\n"); }},
    {"Prompt", [] { PROXY_Prompt("Path", 1); }},
    {"Input", [] { morvane::PROXY_Input("Path", 1); }},
    {"TakeAway", [] { PROXY_Prompt("", 0); }}};

// What `act` writes, and then a message that shows whether it has left a prompt standing.
Writes WritesAndState(const std::function<void()>& act) {
    return WritesOf([&] {
        act();
        PROXY_Print(kNormal, "after\n");
    });
}

// `second` is made while `first` is at its write number `interrupted`.
Writes WritesOfBoth(const ConsoleCall& first, const ConsoleCall& second, std::size_t interrupted) {
    return WritesAndState([&] {
        Rival rival(second.make);
        std::atomic<std::size_t> count{0};
        write_substitute = [&](const void* bytes, std::size_t size) {
            if (count++ == interrupted) rival.GoAsFarAsPossible();
            return RealWrite(bytes, size);
        };
        first.make();
        rival.Join();
        write_substitute = nullptr;
    });
}

void ExpectTurns(const ConsoleCall& first, const ConsoleCall& second) {
    const Writes in_turn = WritesAndState([&] {
        first.make();
        second.make();
    });
    const std::size_t writes = WritesOf(first.make).size();
    for (std::size_t i = 0; i < writes; ++i)
        EXPECT_EQ(WritesOfBoth(first, second, i), in_turn)
            << second.name << " during write " << i << " of " << first.name;
}

TEST(ConsoleThreadsTest, TakeTurns) {
    for (const ConsoleCall& call : kCalls) {
        const ConsoleCall under_prompt = {call.name, [&] {
                                              PROXY_Prompt("Standing", 2);
                                              call.make();
                                          }};
        for (const ConsoleCall& second : kCalls) {
            ExpectTurns(call, second);
            ExpectTurns(under_prompt, second);
        }
    }
}

// The first write(2) gives `result` and `error`, and a positive result has written so many bytes.
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

TEST(WriteTest, ContinuesAfterAShortWriteOrARetryableErrorAndDropsTheMessageOtherwise) {
    const std::string one = Normal("one\n");
    const std::string two = Normal("two\n");
    EXPECT_EQ(OutputAfter(6, 0), one + two);
    EXPECT_EQ(OutputAfter(-1, EINTR), one + two);
    EXPECT_EQ(OutputAfter(-1, EAGAIN), one + two);
    EXPECT_EQ(OutputAfter(-1, EIO), two);
}

}  // namespace
}  // namespace morvane_test
