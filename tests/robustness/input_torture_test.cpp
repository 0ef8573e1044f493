#include "robustness/prompt_cases.h"
#include "support/process_files.h"
#include "support/programs.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

// Everything that can come of an operator, a terminal or a script, at every prompt where the tool
// asks something. Besides what is printed, the work and the memory that it costs are bounded.

namespace morvane_test {
namespace {

// Processor time of the process, not elapsed time; ample, as on a virtual machine it may
// include time that the host has taken away.
constexpr Duration kCpuTimeLimit(5000);
constexpr std::size_t kMegabyte = 1 << 20;
constexpr char kControlC[] = "\x03";

// Sanitizers, which another build's tool may have, and emulators use memory of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitizer = true;
#else
constexpr bool kSanitizer = false;
#endif
const bool kMeasuresMemory =
    !kSanitizer && !IsOtherTool() && std::getenv("MORVANE_TEST_LAUNCHER") == nullptr;

// The most memory that the process has ever had, in bytes.
std::size_t PeakMemory(pid_t process) {
    return ReadProcessNumber(process, "status", "VmHWM:") * 1024;
}

ConsoleOptions Pipes() {
    return Wired(Wiring::kPipes);
}

// Pipes, and memory that is given back as soon as it is no longer used, so that its peak tells what
// was in_main_menu at the same time.
ConsoleOptions PipesReleasingMemory() {
    ConsoleOptions options = Pipes();
    options.environment = {"MALLOC_MMAP_THRESHOLD_=65536"};
    return options;
}

// What somebody else who shares the terminal or pipe may do to it.
ConsoleOptions NonBlocking(ConsoleOptions options) {
    options.prefix = {"/usr/bin/perl", "-MFcntl", "-e",
                      "for (*STDIN, *STDOUT) {"
                      "    fcntl($_, F_SETFL, fcntl($_, F_GETFL, 0) | O_NONBLOCK) or die"
                      "}"
                      "exec @ARGV"};
    return options;
}

// All bytes that a line can hold, none of which is a key, a number or the beginning of a handle in
// its prompt().
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

    // While the process runs.
    void ExpectMemory(std::size_t growth) {
        if (kMeasuresMemory) {
            EXPECT_LT(PeakMemory(console().ProcessId()), memory_ + growth);
        }
    }

    // The end is in good order: nothing was left behind at the daemon.
    void ExpectEnd(Console::Rest rest = Console::Rest::kNone) {
        ExpectExit(0, rest);
        ExpectLowCpuTime();
        EXPECT_TRUE(daemon().Sessions().empty());
    }

    // As the end of input is one.
    static bool AcceptsAnEmptyText() {
        return prompt().asks == Asks::kText && prompt().id != PromptId::kHandle;
    }

    // What comes of a line after Ctrl-C, if the daemon refuses what is still called.
    std::string OutputAfterControlC() const {
        if (prompt().reports_loss_in_its_call)
            return Red(prompt().call.failure + "GDBus.Error:com.veltrisonix.Error.Failed: no\n");
        return prompt().HasTransfer() ? prompt().lost + prompt().end_of_input : prompt().lost;
    }

    // The call that an answer makes has been made so often.
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

TEST_P(InputTorture, EndOfInputThroughAPipe) {
    ReachPrompt(Pipes());
    EndTransfer(prompt());
    console().CloseInput();
    ExpectOutput(prompt().end_of_input);
    ExpectEnd();
}

// Keys and numbers need their end of line, a text does not.
TEST_P(InputTorture, AnswerWithoutItsEnd) {
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

// The bus library has the tool ignore SIGPIPE, so it goes on unseen.
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

// A blank line is an answer to the question for a text only.
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

// As with Ctrl-Z and fg.
TEST_P(InputTorture, LineTypedWhileStopped) {
    ReachPrompt();
    console().Signal(SIGSTOP);
    Type(prompt().answer);
    console().Signal(SIGCONT);
    ExpectOutput(prompt().output);
    ExpectLowCpuTime();
}

TEST_P(InputTorture, LineOfFourMegabytes) {
    // A text of this length has just grown, to exactly this.
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

// The line comes in pieces.
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

TEST_P(InputTorture, LineWithoutEnd) {
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

// Menus pause before each prompt: the lines come faster than they can be taken.
TEST_P(FloodOfLines, IsTakenLineByLine) {
    constexpr std::size_t kLines = 5000;
    ReachPrompt(Pipes());
    std::string lines;
    for (std::size_t i = 0; i < kLines; ++i) lines += "z\n";
    console().TypeBytes(lines);
    for (int i = 0; i < 5; ++i) ExpectOutput(prompt().invalid_answer_output);
    ExpectMemory(kMegabyte / 2);
    // Not awaited: a menu ends with its next line, and the process possibly before the bus library
    // has written what shows the end of the main loop.
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
