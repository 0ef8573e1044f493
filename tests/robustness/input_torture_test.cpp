#include "robustness/places.h"
#include "support/process_files.h"
#include "support/programs.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

// Everything that can come of an operator, a terminal or a script, at every place where the tool
// asks something. Besides what is printed, the work and the memory that it costs are bounded.

namespace morvane_test {
namespace {

// Processor time of the process, not elapsed time; ample, as on a virtual machine it may
// include time that the host has taken away.
constexpr Duration kLittleWork(5000);
constexpr std::size_t kMegabyte = 1 << 20;
constexpr char kControlC[] = "\x03";

// Sanitizers, which another build's tool may have, and emulators use memory of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitizer = true;
#else
constexpr bool kSanitizer = false;
#endif
const bool kMemoryIsTheTools =
    !kSanitizer && !IsOtherTool() && std::getenv("MORVANE_TEST_LAUNCHER") == nullptr;

// The most memory that the process has ever had, in bytes.
std::size_t PeakMemory(pid_t process) {
    return ReadProcessNumber(process, "status", "VmHWM:") * 1024;
}

ConsoleOptions Pipes() {
    return Wired(Wiring::kPipes);
}

// Pipes, and memory that is given back as soon as it is no longer used, so that its peak tells what
// was held at the same time.
ConsoleOptions ThriftyPipes() {
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
// its place().
std::string EveryByte() {
    std::string bytes = {'\x01', '\xff', '\0'};
    for (int byte = 0; byte < 256; ++byte)
        if (byte != '\n') bytes += static_cast<char>(byte);
    return bytes;
}

class InputTorture : public EachPlaceTest {
  protected:
    void ReachPlace(const ConsoleOptions& options = {}) {
        Reach(place(), options);
        cpu_time_ = console().CpuTime();
        calls_ = CountCalls(place().call.method);
        if (kMemoryIsTheTools) memory_ = PeakMemory(console().ProcessId());
    }

    void ExpectLittleWork() { EXPECT_LT(console().CpuTime() - cpu_time_, Stretched(kLittleWork)); }

    // While the process runs.
    void ExpectMemory(std::size_t growth) {
        if (kMemoryIsTheTools) {
            EXPECT_LT(PeakMemory(console().ProcessId()), memory_ + growth);
        }
    }

    // The end is in good order: nothing was left behind at the daemon.
    void ExpectEnd(Console::Rest rest = Console::Rest::kNone) {
        ExpectExit(0, rest);
        ExpectLittleWork();
        EXPECT_TRUE(daemon().Sessions().empty());
    }

    // As the end of input is one.
    static bool AcceptsAnEmptyText() {
        return place().asks == Asks::kText && place().id != PromptId::kHandle;
    }

    // What comes of a line after Ctrl-C, if the daemon refuses what is still called.
    std::string OutputAfterControlC() const {
        if (place().leaves_loss_to_its_call)
            return Red(place().call.failure + "GDBus.Error:com.veltrisonix.Error.Failed: no\n");
        return place().HasTransfer() ? place().lost + place().end_of_input : place().lost;
    }

    // The call that an answer makes has been made so often.
    void ExpectCalls(std::size_t count) {
        EXPECT_EQ(CountCalls(place().call.method), calls_ + count);
    }

  private:
    std::chrono::microseconds cpu_time_{0};
    std::size_t calls_ = 0;
    std::size_t memory_ = 0;
};

TEST_P(InputTorture, EndOfInput) {
    ReachPlace();
    EndTransfer(place());
    console().CloseInput();
    ExpectOutput(place().end_of_input);
    ExpectEnd();
    ExpectCalls(AcceptsAnEmptyText() ? 1 : 0);
}

TEST_P(InputTorture, EndOfInputThroughAPipe) {
    ReachPlace(Pipes());
    EndTransfer(place());
    console().CloseInput();
    ExpectOutput(place().end_of_input);
    ExpectEnd();
}

// Keys and numbers need their end of line, a text does not.
TEST_P(InputTorture, AnswerWithoutItsEnd) {
    ReachPlace(Pipes());
    EndTransfer(place());
    console().TypeBytes(place().asks == Asks::kKey ? place().call.line : place().answer);
    console().CloseInput();
    ExpectOutput(place().unterminated);
    ExpectEnd();
    ExpectCalls(place().asks == Asks::kText ? 1 : 0);
}

TEST_P(InputTorture, HangUp) {
    ReachPlace();
    console().HangUp();
    console().ExpectEndBySignal(SIGHUP);
    ExpectLittleWork();
}

TEST_P(InputTorture, HangUpUnderNohup) {
    ReachPlace(UnderNohup());
    console().HangUp();
    ExpectEnd(Console::Rest::kIgnored);
}

// The bus library has the tool ignore SIGPIPE, so it goes on unseen.
TEST_P(InputTorture, ClosedOutput) {
    ReachPlace(Pipes());
    console().CloseOutput();
    Type(place().answer);
    Type("");
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, ControlC) {
    ReachPlace();
    EndTransfer(place());
    PressControlC();
    EXPECT_FALSE(console().HasEnded());
    if (!place().call.method.empty())
        daemon().Refuse(place().call.method, "com.veltrisonix.Error.Failed", "no", 1);
    Type(place().answer);
    ExpectOutput(OutputAfterControlC());
    ExpectEnd();
}

// A blank line is an answer to the question for a text only.
TEST_P(InputTorture, BlankLineAfterControlC) {
    ReachPlace();
    PressControlC();
    Type("");
    if (place().asks != Asks::kText) {
        Expect(Prompt(place().id));
        if (place().asks == Asks::kNumber) {
            Type("z");
            ExpectOutput(place().nonsense);
        }
        EXPECT_FALSE(console().HasEnded());
        Type("0");
    }
    ExpectExit(0, Console::Rest::kIgnored);
}

TEST_P(InputTorture, ControlCTwice) {
    ReachPlace();
    PressControlC();
    console().TypeBytes(kControlC);
    console().ExpectEndBySignal(SIGINT);
    ExpectLittleWork();
}

// As with Ctrl-Z and fg.
TEST_P(InputTorture, LineTypedWhileStopped) {
    ReachPlace();
    console().Signal(SIGSTOP);
    Type(place().answer);
    console().Signal(SIGCONT);
    ExpectOutput(place().output);
    ExpectLittleWork();
}

TEST_P(InputTorture, LineOfFourMegabytes) {
    // A text of this length has just grown, to exactly this.
    constexpr std::size_t kLength = 15 << 18;
    ReachPlace(ThriftyPipes());
    Type(std::string(kLength, 'z'));
    ExpectOutput(place().nonsense);
    ExpectMemory(kLength * 3 / 2);
    ExpectLittleWork();
}

TEST_P(InputTorture, NonBlockingTerminal) {
    ReachPlace(NonBlocking({}));
    Type(place().answer);
    ExpectOutput(place().output);
    ExpectLittleWork();
}

// The line comes in pieces.
TEST_P(InputTorture, NonBlockingPipe) {
    ReachPlace(NonBlocking(Pipes()));
    Type(std::string(kMegabyte, 'z'));
    ExpectOutput(place().nonsense);
    ExpectLittleWork();
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, LineOfEveryByte) {
    ReachPlace(Pipes());
    Type(EveryByte());
    ExpectOutput(place().nonsense);
    ExpectLittleWork();
}

TEST_P(InputTorture, LineWithoutEnd) {
    ReachPlace(Pipes());
    console().TypeBytes(std::string(kMegabyte, 'z'));
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

TEST_P(InputTorture, TypedAhead) {
    StartPlaceDaemon(place());
    Start(Pipes());
    std::string lines = InSession(place().id) ? "c\n0\n" : "";
    if (NeedsSelection(place().id)) lines += "s\n0\n0\n";
    for (const Answer& answer : place().opening) lines += answer.line + "\n";
    console().TypeBytes(lines + place().answer + "\n");
    Await(Prompt(place().id) + place().output);
}

INSTANTIATE_TEST_SUITE_P(, InputTorture,
                         testing::ValuesIn(PlacesThat([](const Place&) { return true; })),
                         NameOfPlace);

class FloodOfLines : public InputTorture {};

// Menus pause before each prompt: the lines come faster than they can be taken.
TEST_P(FloodOfLines, IsTakenLineByLine) {
    constexpr std::size_t kLines = 5000;
    ReachPlace(Pipes());
    std::string lines;
    for (std::size_t i = 0; i < kLines; ++i) lines += "z\n";
    console().TypeBytes(lines);
    for (int i = 0; i < 5; ++i) ExpectOutput(place().nonsense);
    ExpectMemory(kMegabyte / 2);
    // Not awaited: a menu ends with its next line, and the process possibly before the bus library
    // has written what shows the end of the main loop.
    console().Interrupt();
    console().CloseInput();
    ExpectEnd(Console::Rest::kIgnored);
}

INSTANTIATE_TEST_SUITE_P(, FloodOfLines, testing::ValuesIn(PlacesThat([](const Place& row) {
                             return row.asks != Asks::kText;
                         })),
                         NameOfPlace);

}  // namespace
}  // namespace morvane_test
