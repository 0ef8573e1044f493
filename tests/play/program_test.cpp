// Options, exit statuses, "% tell", signals, and the processes that remain.

#include "play/play_fixture.h"

#include "support/text_form.h"

#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace morvane_test {
namespace {

constexpr char kSession[] = "Vantor > x\ngot x\n";

TEST_F(PlayTest, PlaysAllFilesAndExitsWithWorstStatus) {
    Write("good.session", kSession);
    Write("bad.session", "Vantor > x\ngot y\n");
    const PlayResult result = Run(Behind(kOnePrompt, {"bad.session", "good.session"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("bad.session: FAILED\ngood.session: agrees\n"), std::string::npos)
        << result.output;
}

TEST_F(PlayTest, GivesTheToolTimeToHandleASignal) {
    const auto start = std::chrono::steady_clock::now();
    const PlayResult result = Play(
        "Vantor > ^C^Cq\nbye q\n",
        "trap : INT; printf 'Vantor > '; until read -r answer; do :; done; echo \"bye $answer\"");
    EXPECT_EQ(result.output, "a.session: agrees\n");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 2 * std::chrono::milliseconds(500));
}

TEST_F(PlayTest, PrintsTestAnythingProtocol) {
    Write("bad.session", "Vantor > x\ngot y\n");
    const PlayResult result = Play(kSession, kOnePrompt, {"--tap", "bad.session"});
    EXPECT_EQ(result.output, R"(TAP version 13
1..2
not ok 1 - bad.session
# bad.session:2:5: the output differs
# --- bad.session
# +++ displayed
# @@ -1,2 +1,2 @@
#  Vantor > x
# -got y
# +got x
ok 2 - a.session
)");
    EXPECT_EQ(result.status, 1);
}

TEST_F(PlayTest, ReportsProgramThatCannotRun) {
    Write("a.session", kSession);
    const PlayResult result = Run({"a.session", "--", "./nowhere"});
    EXPECT_EQ(result.output,
              "cannot run ./nowhere: No such file or directory\na.session: FAILED\n");
    EXPECT_EQ(result.status, 2);
}

TEST_F(PlayTest, FailsIfResultsCannotBeWritten) {
    for (const char* const argument : {"a.session", "--help"}) {
        ConsoleOptions options = Starting("one\n", "echo one", {argument});
        options.arguments[1] = "exec \"$@\" 2>&1 >/dev/full";
        Console console(options);
        console.Expect("morvane-play: cannot write to standard output\n");
        console.ExpectExit(2);
    }
}

TEST_F(PlayTest, RefusesBadArgumentsAndUnreadableFiles) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "no file named"},
        {{"a.session", "--"}, "no program behind --"},
        {{"--frobnicate", "a.session"}, "invalid option --frobnicate"},
        {{"--timeout"}, "invalid option --timeout"},
        {{"--timeout=never", "a.session"}, "--timeout takes a time such as 10s, 500ms or 2min"},
        {{"--record", "a.session", "b.session"}, "--record takes one file"},
        {{"--record", "--tap", "a.session"}, "--record and --type take neither --tap nor --update"},
        {{"--record", "--update", "a.session"},
         "--record and --type take neither --tap nor --update"},
        {{"--record", "a.session"}, "--record needs a terminal"},
        {{"--type", "a.session"}, "--type takes no file, but standard input"},
        {{"--type", "--tap"}, "--record and --type take neither --tap nor --update"},
        {{"--type", "--update"}, "--record and --type take neither --tap nor --update"},
        {{"--type", "--record", "a.session"}, "--record and --type exclude each other"},
        {{"--record", "--type", "a.session"}, "--record and --type exclude each other"},
        {{"nowhere.session"}, "nowhere.session: No such file or directory"},
        {{"/dev/zero"}, "/dev/zero: more than 64 MiB"},
    };
    for (const auto& [arguments, reason] : rows) {
        const PlayResult result = Run(arguments);
        EXPECT_EQ(result.output, std::string("morvane-play: ") + reason + "\n");
        EXPECT_EQ(result.status, 2);
    }
}

TEST_F(PlayTest, HelpAndVersionSucceed) {
    EXPECT_EQ(Run({"--help"}).status, 0);
    const PlayResult version = Run({"--version"});
    EXPECT_EQ(version.output, "morvane-play " MORVANE_VERSION "\n");
    EXPECT_EQ(version.status, 0);
}

TEST_F(PlayTest, FileSetsTimeout) {
    Write("a.session", "% timeout 50ms\none\n");
    Write("tool", "read -r answer");
    const PlayResult result = Run({"a.session", "--", "/bin/sh", "tool"});
    EXPECT_EQ(result.output.substr(0, result.output.find(';')),
              "a.session:2: \"one\" did not come within 50 ms");
}

TEST_F(PlayTest, TimeoutOptionReplacesThatOfTheFile) {
    const PlayResult result =
        Play("% timeout 1min\none\n", "read -r answer", {"--timeout", "50ms"});
    EXPECT_EQ(result.output.substr(0, result.output.find(';')),
              "a.session:2: \"one\" did not come within 50 ms");
}

TEST_F(PlayTest, AwaitReplacesTheTimeout) {
    const PlayResult result =
        Play("% await 1min\none\ntwo\n", "echo one; echo two", {"--timeout=1ms"});
    EXPECT_EQ(result.output, "a.session: agrees\n");
}

// A stub for the tool that displays the commands that the stub for the simulator receives.
constexpr char kTold[] = R"(
mkfifo pipe
echo one
printf 'Vantor > '
read -r command <pipe; notify "$command" Vantor
read -r answer
)";

TEST_F(PlayTest, TellSendsCommandAfterPrecedingOutput) {
    WriteProgram("simulator", "#!/bin/sh\n[ \"$1\" = --tell ] && echo \"$2\" >pipe\n");
    const PlayResult result =
        Play("one\n% tell lose it\nlose it\nVantor > q\n", kTold, {"--simulator=./simulator"});
    EXPECT_EQ(result.output, "a.session: agrees\n");
}

TEST_F(PlayTest, FailsIfSimulatorDoesNotExecuteTell) {
    WriteProgram("refusing", "#!/bin/sh\necho unknown command; exit 1\n");
    for (const auto& [simulator, reason] :
         {std::pair("./refusing", "./refusing ended with status 1\nunknown command\n"),
          std::pair("./nowhere", "cannot run ./nowhere: No such file or directory\n")}) {
        const PlayResult result = Play("one\n% tell lose it\n", "echo one; read -r answer",
                                       {std::string("--simulator=") + simulator});
        EXPECT_EQ(result.output,
                  std::string("a.session:2: the simulator was not told \"lose it\": ") + reason +
                      "a.session: FAILED\n");
        EXPECT_EQ(result.status, 2);
    }
}

TEST_F(PlayTest, TellAwaitsPrecedingPrompt) {
    WriteProgram("simulator", "#!/bin/sh\necho \"$2\" >told\n");
    const PlayResult late = Play("one\n% await 50ms\nVantor >\n% tell x\nVantor > q\n",
                                 "echo one; read -r answer", {"--simulator=./simulator"});
    EXPECT_EQ(late.status, 1);
    EXPECT_FALSE(Exists("told"));
    const PlayResult result = Play("one\nVantor >\n% tell x\nVantor > q\n",
                                   "echo one; prompt Vantor ' > '", {"--simulator=./simulator"});
    EXPECT_EQ(result.output, "a.session: agrees\n");
    EXPECT_EQ(Read("told"), "x\n");
}

TEST_F(PlayTest, EndsToolThatIgnoresHangUp) {
    const PlayResult result = Play("one\n% await 50ms\ntwo\n", R"(
trap '' HUP TERM INT
sleep 600 & echo $! >sleeper; echo $$ >process
echo one
while :; do wait; done
)");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("\n/bin/sh did not end with its input and was ended by SIGKILL\n"),
              std::string::npos)
        << result.output;
    ExpectGone(Read("process"));
    ExpectGone(Read("sleeper"));
}

TEST_F(PlayTest, ClosesInputOfToolBeforeSendingSignals) {
    const PlayResult result =
        Play("one\n% await 50ms\ntwo\n",
             "printf 'one\nVantor > '; read -r answer || echo removed >session");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Read("session"), "removed\n");
}

class WaitingTool : public PlayTest {
  protected:
    /// Options for a script that waits for a line.
    ConsoleOptions Options() const {
        MakePipe();
        return Starting("Vantor > q\n", "echo $$ >process; cat pipe; read -r answer");
    }
    /// Returns the script's process ID once it runs.
    pid_t Await() const {
        WriteToPipe();
        return std::stoi(Read("process"));
    }
};

TEST_F(WaitingTool, IsEndedWhenASignalEndsThePlayer) {
    Console console(Options());
    Await();
    console.Signal(SIGTERM);
    console.ExpectEndBySignal(SIGTERM);
    ExpectGone(Read("process"));
}

// As under nohup(1).
TEST_F(PlayTest, KeepsIgnoringAnIgnoredSignal) {
    MakePipe();
    ConsoleOptions options = Starting(kSession, std::string("cat pipe >/dev/null\n") + kOnePrompt);
    options.prefix = {"env", "--ignore-signal=HUP"};
    Console console(options);
    FileDescriptor pipe = WriteToPipe();
    console.Signal(SIGHUP);
    pipe.Close();
    console.Expect("a.session: agrees\n");
    console.ExpectExit(0);
}

TEST_F(PlayTest, ErasesProgressWhenASignalEndsIt) {
    ConsoleOptions options = Starting("one\ntwo\n", "read -r answer");
    options.wiring = Wiring::kInteractiveTerminal;
    Console console(options);
    console.Await("a.session: line 2 of 2");
    console.Signal(SIGINT);
    console.Await("\r\x1b[K");
    console.ExpectEndBySignal(SIGINT);
}

// While a tracer has not reaped a process that has ended, its parent cannot reap it.
TEST_F(WaitingTool, IsNotAwaitedIfItCannotBeReaped) {
    Console console(Options());
    const pid_t process = Await();
    if (ptrace(PTRACE_SEIZE, process, nullptr, nullptr) != 0)
        GTEST_SKIP() << "no process can be traced here: " << std::strerror(errno);
    console.Signal(SIGTERM);
    console.ExpectEndBySignal(SIGTERM);
    EXPECT_EQ(waitpid(process, nullptr, __WALL), process);
}

}  // namespace
}  // namespace morvane_test
