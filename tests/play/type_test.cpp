// morvane-play --type: standard input, typed on a terminal.

#include "play/play_fixture.h"

#include "support/messages.h"
#include "support/patience.h"

#include <sys/ioctl.h>

#include <fcntl.h>

#include <chrono>
#include <climits>
#include <filesystem>
#include <ostream>
#include <thread>

namespace morvane_test {
namespace {

std::string Displayed(const std::string& text) {
    return "\x1b[1;32mVantor\x1b[0m\x1b[1;31m > \x1b[0m" + text;
}

class TypeTest : public PlayTest {
  protected:
    PlayResult Type(const std::string& keys, const std::string& script) const {
        Write("keys", keys);
        return Run(Behind(script, {"--type"}), "<keys");
    }
    /// A run without input that can be ended.
    ConsoleOptions Typing(const std::string& script, const std::string& redirections = "") const {
        ConsoleOptions options = Playing(Behind(script, {"--type"}));
        options.arguments[1] += " " + redirections;
        options.directory = directory().Path();
        return options;
    }
};

struct Typed {
    const char* name;
    std::string keys;
    const char* script;
    std::string output;
};

std::ostream& operator<<(std::ostream& out, const Typed& typed) {
    return out << typed.name;
}

class TypedInput : public TypeTest, public testing::WithParamInterface<Typed> {};

TEST_P(TypedInput, IsDisplayedAtItsPrompt) {
    const PlayResult result = Type(GetParam().keys, GetParam().script);
    EXPECT_EQ(result.output, GetParam().output);
    EXPECT_EQ(result.status, 0);
}

const Typed kTyped[] = {
    {"Lines", "g\nAnn Doe\n",
     "echo one; prompt Vantor ' > '; echo \"got $answer\"; prompt Vantor ' > '; echo over",
     "one\n" + Displayed("g\ngot g\n") + Displayed("Ann Doe\nover\n")},
    {"LastLineWithoutEnd", "g", kOnePrompt, Displayed("g\ngot g\n")},
    {"WindowsLineEnds", "g\r\n\r\n", "prompt Vantor ' > '; prompt Vantor ' > '; echo \"[$answer]\"",
     Displayed("g\n") + Displayed("\n[]\n")},
    {"ControlCharacters", "a\x03\x04\x1a\x15\n",
     "prompt Vantor ' > '; printf %s \"$answer\" | od -c -An",
     Displayed("a^\b^C^\b^D^\b^Z^\b^U\n   a 003 004 032 025\n")},
    {"LongestLine", std::string(4000, 'x') + "\n", "prompt Vantor ' > '; echo ${#answer}",
     Displayed(std::string(4000, 'x') + "\n4000\n")},
    {"EndOfInput", "", "prompt Vantor ' > ' || echo over", Displayed("over\n")},
    {"EndOfInputWithoutPrompt", "g\n", "prompt Vantor ' > '; read -r answer || echo over",
     Displayed("g\nover\n")},
    {"LinesThatAreNotRead", "g\nh\n", "prompt Vantor ' > '", Displayed("g\n")},
    {"OutputWithCarriageReturns", "", "printf 'a\\r\\nb\\rc\\n'", "a\r\nb\rc\n"},
    {"Notification", "g\n",
     "printf 'Vantor >'; notify one Vantor; read -r answer; echo \"got $answer\"",
     "Vantor >\n\x1b[0mone\n\x1b[1;32mVantor\x1b[1;31m > \x1b[0mg\ngot g\n"},
};

INSTANTIATE_TEST_SUITE_P(Play, TypedInput, testing::ValuesIn(kTyped),
                         [](const auto& typed) { return std::string(typed.param.name); });

TEST_F(TypeTest, ExitsWithStatusOrSignalOfProgram) {
    EXPECT_EQ(Type("", "exit 3").status, 3);
    Console console(Typing("kill -KILL $$"));
    console.ExpectEndBySignal(SIGKILL);
}

TEST_F(TypeTest, FailsIfTheProgramCannotRun) {
    const PlayResult result = Run({"--type", "--", "./nowhere"});
    EXPECT_EQ(result.output, "morvane-play: cannot run ./nowhere: No such file or directory\n");
    EXPECT_EQ(result.status, 2);
}

TEST_F(TypeTest, RefusesLineTooLongForTerminal) {
    Write("keys", "g\n" + std::string(4001, 'x') + "\n");
    for (const auto& [keys, line] : {std::pair("keys", "2"), std::pair("/dev/zero", "1")}) {
        const PlayResult result = Run(Behind("while prompt Vantor ' > '; do :; done", {"--type"}),
                                      std::string("<") + keys);
        EXPECT_NE(result.output.find("morvane-play: standard input:" + std::string(line) +
                                     ": the answer is longer than a terminal takes\n"),
                  std::string::npos)
            << result.output;
        EXPECT_EQ(result.status, 2);
    }
}

TEST_F(TypeTest, FailsIfTheInputCannotBeRead) {
    const PlayResult result = Run(Behind(kOnePrompt, {"--type"}), "<.");
    EXPECT_NE(result.output.find("morvane-play: standard input: Is a directory\n"),
              std::string::npos);
    EXPECT_EQ(result.status, 2);
}

TEST_F(TypeTest, ReadsNoMoreInputThanItNeeds) {
    std::string keys = "g\n";
    keys.resize(std::size_t{1} << 20U, '\n');
    Write("keys", keys);
    ConsoleOptions options = Typing(kOnePrompt);
    options.arguments[1] = R"({ "$@" 2>&1; wc -c; } <keys)";
    Console console(options);
    console.Await("got g\n");
    console.ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_GT(std::stoi(console.Unconsumed()), 1'000'000);
}

TEST_F(TypeTest, TreatsClosedInputAsEndOfInput) {
    EXPECT_EQ(Run(Behind("read -r answer || echo over", {"--type"}), "<&-").output, "over\n");
}

TEST_F(TypeTest, FailsIfOutputCannotBeWritten) {
    for (const char* const output : {"/dev/full", "&-"}) {
        const PlayResult result = Run(Behind("echo $$ >process; echo one; exec cat", {"--type"}),
                                      std::string(">") + output);
        EXPECT_EQ(result.output, "morvane-play: cannot write to standard output\n");
        EXPECT_EQ(result.status, 2);
        ExpectGone(Read("process"));
    }
}

TEST_F(TypeTest, FailsIfNoProcessReadsItsOutput) {
    MakePipe();
    Console console(Typing("echo $$ >process; cat pipe >/dev/null; echo one; exec cat"));
    FileDescriptor pipe = WriteToPipe();
    console.CloseOutput();
    pipe.Close();
    console.ExpectExit(2);
    ExpectGone(Read("process"));
}

TEST_F(TypeTest, EndsTheProgramWhenASignalEndsIt) {
    Console console(Typing("echo $$ >process; echo started; read -r answer"));
    console.Await("started");
    console.Signal(SIGINT);
    console.ExpectEndBySignal(SIGINT);
    ExpectGone(Read("process"));
}

TEST_F(TypeTest, IsEndedBySignalWhileItsOutputIsNotRead) {
    MakePipe();
    const FileDescriptor pipe(
        Checked(open(directory().File("pipe").c_str(), O_RDWR | O_CLOEXEC), "open"));
    Console console(Typing("exec yes", ">pipe"));
    const auto deadline = std::chrono::steady_clock::now() + Patience();
    for (int size = 0; size < 65536 - PIPE_BUF && std::chrono::steady_clock::now() < deadline;) {
        Checked(ioctl(pipe.Number(), FIONREAD, &size), "FIONREAD");
        std::this_thread::yield();
    }
    console.Signal(SIGTERM);
    console.ExpectEndBySignal(SIGTERM);
}

TEST_F(TypeTest, DisplaysKeysOnceOnATerminal) {
    ConsoleOptions options = Typing("prompt Vantor ' > '; echo \"got $answer\"; exec cat");
    options.wiring = Wiring::kInteractiveTerminal;
    Console console(options);
    console.Expect(Displayed(""));
    console.TypeBytes("g\n");
    console.Expect("g\ngot g\n");
    console.TypeBytes("\x04");
    console.ExpectExit(0);
}

}  // namespace
}  // namespace morvane_test
