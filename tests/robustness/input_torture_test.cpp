#include "robustness/prompt_cases.h"
#include "support/process_files.h"
#include "support/programs.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

// Unusual input at every prompt: end of input, signals, long and invalid lines. Also limits CPU
// time and memory.

namespace morvane_test {
namespace {

// CPU time, not elapsed time; generous, since a virtual machine may include stolen time.
constexpr Duration kCpuTimeLimit(5000);
constexpr std::size_t kMegabyte = 1 << 20;
constexpr char kControlC[] = "\x03";

// Sanitizers (also of another tool) and emulators use additional memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitizer = true;
#else
constexpr bool kSanitizer = false;
#endif
const bool kMeasuresMemory =
    !kSanitizer && !IsOtherTool() && std::getenv("MORVANE_TEST_LAUNCHER") == nullptr;

// Peak resident memory of the process in bytes.
std::size_t PeakMemory(pid_t process) {
    return ReadProcessNumber(process, "status", "VmHWM:") * 1024;
}

ConsoleOptions Pipes() {
    return Wired(Wiring::kPipes);
}

// Makes free() return large blocks to the kernel immediately, so that the peak contains only memory
// that was in use at the same time.
ConsoleOptions PipesReleasingMemory() {
    ConsoleOptions options = Pipes();
    options.environment = {"MALLOC_MMAP_THRESHOLD_=65536"};
    return options;
}

// Sets O_NONBLOCK, as another process that shares the terminal or pipe may do.
ConsoleOptions NonBlocking(ConsoleOptions options) {
    options.prefix = {"/usr/bin/perl", "-MFcntl", "-e",
                      "for (*STDIN, *STDOUT) {"
                      "    fcntl($_, F_SETFL, fcntl($_, F_GETFL, 0) | O_NONBLOCK) or die"
                      "}"
                      "exec @ARGV"};
    return options;
}

// A line of all bytes that begins with no valid key, number or handle.
std::string EveryByte() {
    std::string bytes = {'\x01', '\xff', '\0'};
    for (int byte = 0; byte < 256; ++byte)
        if (byte != '\n') bytes += static_cast<char>(byte);
    return bytes;
}

class InputTorture : public EachPromptTest {
  protected:
    void ReachPrompt(const ConsoleOptions& options = {}) {
        Reach(prompt(), options);
        cpu_time_ = console().CpuTime();
        calls_ = CountCalls(prompt().call.method);
        if (kMeasuresMemory) memory_ = PeakMemory(console().ProcessId());
    }

    void ExpectLowCpuTime() {
        EXPECT_LT(console().CpuTime() - cpu_time_, Stretched(kCpuTimeLimit));
    }

    // Must be called while the process is running.
    void ExpectMemory(std::size_t growth) {
        if (kMeasuresMemory) {
            EXPECT_LT(PeakMemory(console().ProcessId()), memory_ + growth);
        }
    }

    // The tool exits with status 0 and leaves no session in the daemon.
    void ExpectEnd(Console::Rest rest = Console::Rest::kNone) {
        ExpectExit(0, rest);
        ExpectLowCpuTime();
        EXPECT_TRUE(daemon().Sessions().empty());
    }

    // End of input is an empty text.
    static bool AcceptsAnEmptyText() {
        return prompt().asks == Asks::kText && prompt().id != PromptId::kHandle;
    }

    // Output for a line after Ctrl-C, if the daemon refuses calls.
    std::string OutputAfterControlC() const {
        if (prompt().reports_loss_in_its_call)
            return Red(prompt().call.failure + "GDBus.Error:com.veltrisonix.Error.Failed: no\n");
        return prompt().HasTransfer() ? prompt().lost + prompt().end_of_input : prompt().lost;
    }

    // Expects `count` calls of the prompt's method since the prompt was opened.
    void ExpectCalls(std::size_t count) {
        EXPECT_EQ(CountCalls(prompt().call.method), calls_ + count);
    }

  private:
    std::chrono::microseconds cpu_time_{0};
    std::size_t calls_ = 0;
    std::size_t memory_ = 0;
};

TEST_P(InputTorture, EndOfInput) {
    ReachPrompt();
    EndTransfer(prompt());
    console().CloseInput();
    ExpectOutput(prompt().end_of_input);
    ExpectEnd();
    ExpectCalls(AcceptsAnEmptyText() ? 1 : 0);
}

// Keys and numbers need a newline, texts do not.
TEST_P(InputTorture, AnswerWithoutNewline) {
    ReachPrompt(Pipes());
    EndTransfer(prompt());
    console().TypeBytes(prompt().asks == Asks::kKey ? prompt().call.line : prompt().answer);
    console().CloseInput();
    ExpectOutput(prompt().unterminated);
    ExpectEnd();
    ExpectCalls(prompt().asks == Asks::kText ? 1 : 0);
}

TEST_P(InputTorture, HangUp) {
    ReachPrompt();
    console().HangUp();
    console().ExpectEndBySignal(SIGHUP);
    ExpectLowCpuTime();
}

TEST_P(InputTorture, HangUpUnderNohup) {
    ReachPrompt(UnderNohup());
    console().HangUp();
    ExpectEnd(Console::Rest::kIgnored);
}

// GIO ignores SIGPIPE, so the tool continues.
TEST_P(InputTorture, ClosedOutput) {
    ReachPrompt(Pipes());
    console().CloseOutput();
    Type(prompt().answer);
    Type("");
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, ControlC) {
    ReachPrompt();
    EndTransfer(prompt());
    PressControlC();
    EXPECT_FALSE(console().HasEnded());
    if (!prompt().call.method.empty())
        daemon().Refuse(prompt().call.method, "com.veltrisonix.Error.Failed", "no", 1);
    Type(prompt().answer);
    ExpectOutput(OutputAfterControlC());
    ExpectEnd();
}

// A blank line is a valid answer only for texts.
TEST_P(InputTorture, BlankLineAfterControlC) {
    ReachPrompt();
    PressControlC();
    Type("");
    if (prompt().asks != Asks::kText) {
        Expect(Prompt(prompt().id));
        if (prompt().asks == Asks::kNumber) {
            Type("z");
            ExpectOutput(prompt().invalid_answer_output);
        }
        EXPECT_FALSE(console().HasEnded());
        Type("0");
    }
    ExpectExit(0, Console::Rest::kIgnored);
}

TEST_P(InputTorture, ControlCTwice) {
    ReachPrompt();
    PressControlC();
    console().TypeBytes(kControlC);
    console().ExpectEndBySignal(SIGINT);
    ExpectLowCpuTime();
}

// As with Ctrl-Z and "fg".
TEST_P(InputTorture, LineTypedWhileStopped) {
    ReachPrompt();
    console().Signal(SIGSTOP);
    Type(prompt().answer);
    console().Signal(SIGCONT);
    ExpectOutput(prompt().output);
    ExpectLowCpuTime();
}

TEST_P(InputTorture, LineOfFourMegabytes) {
    // The tool's buffer has just been reallocated at this length.
    constexpr std::size_t kLength = 15 << 18;
    ReachPrompt(PipesReleasingMemory());
    Type(std::string(kLength, 'z'));
    ExpectOutput(prompt().invalid_answer_output);
    ExpectMemory(kLength * 3 / 2);
    ExpectLowCpuTime();
}

TEST_P(InputTorture, NonBlockingTerminal) {
    ReachPrompt(NonBlocking({}));
    Type(prompt().answer);
    ExpectOutput(prompt().output);
    ExpectLowCpuTime();
}

// The tool reads the line in several parts.
TEST_P(InputTorture, NonBlockingPipe) {
    ReachPrompt(NonBlocking(Pipes()));
    Type(std::string(kMegabyte, 'z'));
    ExpectOutput(prompt().invalid_answer_output);
    ExpectLowCpuTime();
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, LineOfEveryByte) {
    ReachPrompt(Pipes());
    Type(EveryByte());
    ExpectOutput(prompt().invalid_answer_output);
    ExpectLowCpuTime();
}

TEST_P(InputTorture, LongLineWithoutNewline) {
    ReachPrompt(Pipes());
    console().TypeBytes(std::string(kMegabyte, 'z'));
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, TypedAhead) {
    StartCaseDaemon(prompt());
    Start(Pipes());
    std::string lines = InSession(prompt().id) ? "c\n0\n" : "";
    if (NeedsSelection(prompt().id)) lines += "s\n0\n0\n";
    for (const Answer& answer : prompt().opening) lines += answer.line + "\n";
    console().TypeBytes(lines + prompt().answer + "\n");
    Await(Prompt(prompt().id) + prompt().output);
}

INSTANTIATE_TEST_SUITE_P(, InputTorture,
                         testing::ValuesIn(PromptCasesWith([](const PromptCase&) { return true; })),
                         NameOfPrompt);

class FloodOfLines : public InputTorture {};

// Menus pause before each prompt: lines arrive faster than they are read.
TEST_P(FloodOfLines, IsReadLineByLine) {
    constexpr std::size_t kLines = 5000;
    ReachPrompt(Pipes());
    std::string lines;
    for (std::size_t i = 0; i < kLines; ++i) lines += "z\n";
    console().TypeBytes(lines);
    for (int i = 0; i < 5; ++i) ExpectOutput(prompt().invalid_answer_output);
    ExpectMemory(kMegabyte / 2);
    // Does not wait: the menu may exit before GIO has sent the message that shows the end of the
    // main loop.
    console().Interrupt();
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

INSTANTIATE_TEST_SUITE_P(, FloodOfLines,
                         testing::ValuesIn(PromptCasesWith([](const PromptCase& row) {
                             return row.asks != Asks::kText;
                         })),
                         NameOfPrompt);

}  // namespace
}  // namespace morvane_test
