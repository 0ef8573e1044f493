#include "play/files.h"
#include "play/play_fixture.h"
#include "support/conversation.h"
#include "support/discovery.h"
#include "support/programs.h"

#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>

namespace morvane_test {
namespace {

/// Records a script in place of the tool, on an interactive terminal.
class RecordTest : public PlayTest {
  protected:
    Console& Record(const std::string& script) {
        ConsoleOptions options = Playing(Behind(script, {"--record", "a.session"}));
        options.wiring = Wiring::kInteractiveTerminal;
        options.directory = directory().Path();
        return console_.emplace(options);
    }

    void Type(std::string_view bytes) { console_->TypeBytes(bytes); }
    void Await(std::string_view text) { console_->Await(text); }

    /// Awaits the end, and returns the file.
    std::string Recorded(int status = 0) {
        console_->ExpectExit(status, Console::Rest::kIgnored);
        return Read("a.session");
    }
    Console& console() { return *console_; }

  private:
    std::optional<Console> console_;
};

constexpr char kTwoPrompts[] = R"(
prompt Vantor ' > '; echo "got $answer"
prompt 'Vantor/User Id' ' ? '; echo "got $answer"
)";
constexpr char kMarker[] = "\x1b[1;31m > \x1b[0m";
constexpr char kValueMarker[] = "\x1b[1;31m ? \x1b[0m";

TEST_F(RecordTest, WritesDisplayedLinesAndAnswersAfterPrompts) {
    Record(kTwoPrompts);
    Await(kMarker);
    Type("g\r");
    Await(kValueMarker);
    Type(
        "Ann\x7f\x7f"
        "da\r");
    EXPECT_EQ(Recorded(), "$ morvane\nVantor > g\ngot g\nVantor/User Id ? Ada\ngot Ada\n");
    EXPECT_EQ(Play(Read("a.session"), kTwoPrompts).output, "a.session: agrees\n");
}

TEST_F(RecordTest, TypesEachLineAtItsPrompt) {
    Record(kTwoPrompts);
    Type("one\r^C \r");
    EXPECT_EQ(Recorded(), "$ morvane\nVantor > one\ngot one\nVantor/User Id ? \\^C \\\ngot ^C\n");
}

TEST_F(RecordTest, WritesWildcardsArgumentsAndExitStatus) {
    Write("morvane", "#!/bin/sh\necho /hci0/dev_02_00_5E_10_00_02; exit 3\n");
    std::filesystem::permissions(directory().File("morvane"), std::filesystem::perms::owner_all);
    ConsoleOptions options = Playing({"--record", "a.session", "--", "./morvane", "-bus:second"});
    options.wiring = Wiring::kInteractiveTerminal;
    options.directory = directory().Path();
    Console console(options);
    console.ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(Read("a.session"), "$ morvane -bus:second\n% exit 3\n/hci0/dev_[..]\n");
}

TEST_F(RecordTest, IgnoresProgress) {
    Record("echo active; echo 'Transferred Percent: 3%'; prompt Vantor ' > '; echo complete");
    Await(kMarker);
    Type("x\r");
    const std::string session = Recorded();
    EXPECT_EQ(session,
              "$ morvane\n% ignore Transferred Percent: [..]\nactive\nVantor > x\ncomplete\n");
    const PlayResult result = Play(session,
                                   "echo active; prompt Vantor ' > '; echo complete; "
                                   "echo 'Transferred Percent: 50%'");
    EXPECT_EQ(result.output, "a.session: agrees\n");
}

TEST_F(RecordTest, AwaitsLateOutputForLonger) {
    Record("echo active; prompt Vantor ' > '; echo 'Transferred Percent: 3%'; sleep 8; echo over");
    Await(kMarker);
    Type("x\r");
    const std::string session = Recorded();
    EXPECT_TRUE(std::regex_match(session, std::regex(R"((.+\n)+Vantor > x\n% await \d+s\nover\n)")))
        << session;
    EXPECT_EQ(Play(session, "echo active; prompt Vantor ' > '; echo over").output,
              "a.session: agrees\n");
}

TEST_F(RecordTest, WritesHalfTypedAnswerOnce) {
    MakePipe();
    Record(R"(
printf 'Vantor > '
read -r message <pipe; notify "$message" Vantor
read -r answer; echo "got $answer"
)");
    Await("Vantor > ");
    Type("ab");
    Await("ab");
    WriteToPipe("Folder: pb\n");
    Await("Folder: pb\n");
    Await(kMarker);
    Type("c\r");
    EXPECT_EQ(Recorded(), "$ morvane\nFolder: pb\nVantor > abc\ngot abc\n");
}

TEST_F(RecordTest, DoesNotForwardReprintKey) {
    Record(kTwoPrompts);
    Await(kMarker);
    Type("a\x12");
    Await("a");
    Type("z\r");
    Await(kValueMarker);
    Type("b\r");
    EXPECT_EQ(Recorded(), "$ morvane\nVantor > az\ngot az\nVantor/User Id ? b\ngot b\n");
}

TEST_F(RecordTest, EveryByteCanBePlayed) {
    constexpr char kReader[] = "printf 'Vantor > '; dd bs=4096 count=1 2>&- >got";
    std::string line;
    Record(kReader);
    Await("Vantor > ");
    for (int byte = 0; byte <= 0xff; ++byte) {
        line += static_cast<char>(byte);
        Type(std::string("\x16") + static_cast<char>(byte));
    }
    Type("\r");
    const std::string session = Recorded();
    EXPECT_EQ(Read("got"), line + "\n");
    std::filesystem::remove(directory().File("got"));
    EXPECT_EQ(Play(session, kReader).output, "a.session: agrees\n");
    EXPECT_EQ(Read("got"), line + "\n");
}

TEST_F(RecordTest, ForwardsControlC) {
    Record(
        "trap 'echo interrupted >seen' INT\nprintf 'Vantor > '\n"
        "until read -r answer; do :; done; echo \"got $answer\"");
    Await("Vantor > ");
    Type("\x03");
    Await("^C");
    Type("q\r");
    EXPECT_EQ(Recorded(), "$ morvane\nVantor > ^Cq\ngot q\n");
    EXPECT_EQ(Read("seen"), "interrupted\n");
}

TEST_F(RecordTest, WritesSignalThatEndsTool) {
    Record("printf 'Vantor > '; exec cat");
    Await("Vantor > ");
    Type("\x03");
    EXPECT_EQ(Recorded(), "$ morvane\n% exit signal 2\nVantor > ^C\n");
}

TEST_F(RecordTest, ForwardsEndOfInput) {
    Record("prompt Vantor ' > ' || echo over");
    Await(kMarker);
    Type("\x04");
    EXPECT_EQ(Recorded(), "$ morvane\nVantor > ^D\nover\n");
}

TEST_F(RecordTest, LeavesExistingFileUntouched) {
    Write("a.session", "mine\n");
    Record("echo ran >ran");
    EXPECT_EQ(Recorded(2), "mine\n");
    EXPECT_FALSE(Exists("ran"));
}

TEST_F(RecordTest, LeavesNoFileIfItCannotStart) {
    EXPECT_EQ(Run({"--record", "a.session"}).output, "morvane-play: --record needs a terminal\n");
    EXPECT_FALSE(Exists("a.session"));
    ConsoleOptions options = Playing({"--record", "a.session", "--", "./nowhere"});
    options.wiring = Wiring::kInteractiveTerminal;
    options.directory = directory().Path();
    Console console(options);
    console.ExpectExit(2, Console::Rest::kIgnored);
    EXPECT_FALSE(Exists("a.session"));
}

TEST_F(RecordTest, WritesSessionSoFarWhenASignalEndsIt) {
    Record("echo one; prompt Vantor ' > '");
    Await(kMarker);
    console().Signal(SIGTERM);
    console().ExpectEndBySignal(SIGTERM);
    EXPECT_EQ(Read("a.session"), "$ morvane\none\n");
}

/// A shell with job control in which a session is recorded.
class RecordInShellTest : public RecordTest {
  protected:
    Console& StartShell(const std::string& script) {
        const std::vector<std::string> words = Behind(script, {"--record", "a.session"});
        const ConsoleOptions playing = Playing(words);
        std::string command;
        for (std::size_t i = 3; i < playing.arguments.size(); ++i)
            command += " '" + playing.arguments[i] + "'";
        Write("job", command + "\n");
        ConsoleOptions options;
        options.program = "/bin/sh";
        options.arguments = {"-c",
                             "stty rows 30 cols 100; stty -a >before; set -m; . ./job; stty -a "
                             ">after; echo stopped; read -r line; fg >/dev/null; echo over"};
        options.wiring = Wiring::kInteractiveTerminal;
        options.directory = directory().Path();
        return console_.emplace(options);
    }

    std::optional<Console> console_;
};

TEST_F(RecordInShellTest, StopsAndContinuesAsAJob) {
    Console& shell = StartShell("stty size; printf 'Vantor > '; read -r answer; echo got $answer");
    shell.Await("30 100");
    shell.Await("Vantor > ");
    shell.TypeBytes("\x1a");
    shell.Await("^Z");
    shell.Await("stopped");
    EXPECT_EQ(Read("after"), Read("before"));
    shell.TypeBytes("\n");
    shell.TypeBytes("g\r");
    shell.Await("got g");
    shell.Await("over");
    shell.ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_EQ(Read("a.session"), "$ morvane\n30 100\nVantor > g\ngot g\n");
}

/// A recording of the tool with the simulated daemon.
class RecordedConversation : public ConversationTest {};

TEST_F(RecordedConversation, CanBePlayed) {
    simulator::Options phones;
    phones.phones = 1;
    StartDaemon(phones);
    std::istringstream launcher(Launcher());
    std::vector<std::string> words = {"--record", "a.session", "--"};
    words.insert(words.end(), std::istream_iterator<std::string>(launcher), {});
    words.push_back(ToolPath());
    ConsoleOptions options = Playing(words);
    options.wiring = Wiring::kInteractiveTerminal;
    Start(options);
    for (const char* const answer : {"l\r", "c\r", "0\r", "g\r", "x\r"}) {
        console().TypeBytes(answer);
        Await(kRedSequence);  // the marker of the next prompt
    }
    console().TypeBytes("q\r");
    ExpectExit(0, Console::Rest::kIgnored);

    // The message about the device that Start() adds is among the first messages, in undefined
    // order.
    const std::string recorded = std::regex_replace(play::ReadFile(directory().File("a.session")),
                                                    std::regex(".*/dev_probe\n"), "");
    const std::string session =
        std::regex_replace(recorded, std::regex("\nVantor > l\n"), "\n% end$&");
    EXPECT_EQ(PlayOnSimulator(AwaitingDiscovery(std::regex_replace(
                                  session, std::regex("^\\$ morvane\n"), "$&% any order\n")),
                              {"--phones=1"})
                  .output,
              "a.session: agrees\n");
}

}  // namespace
}  // namespace morvane_test
