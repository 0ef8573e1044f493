// Commands for a running simulator, and how it is found.

#include "simulator/program_fixture.h"
#include "support/private_bus.h"

#include <csignal>

#include <sys/wait.h>

namespace simulator {
namespace {

using morvane_test::PrivateBus;

/// The list of phones with --phones=1.
constexpr char kPhoneLine[] =
    "/com/veltrisonix/hci0/dev_02_00_5E_10_00_01  02:00:5E:10:00:01  Aster\n";

class Tell : public ProgramTest {
  protected:
    std::string RuntimeFolder() const { return directory_.File("morvane-simulator"); }
    std::string RuntimeFile(const Console& console) const {
        return RuntimeFolder() + "/" + std::to_string(console.ProcessId());
    }

    /// Runs a simulator with a command that ends at the end of its input.
    Console& RunExec(const std::vector<std::string>& options = {}) {
        std::vector<std::string> words = options;
        words.insert(words.end(), {"--exec", "sh", "-c", "echo ready; read line; exit 0"});
        Console& console = Run(words);
        console.Expect("ready\n");
        return console;
    }
    void ExpectRefusal(const std::vector<std::string>& arguments, const std::string& reason) {
        ExpectFailure(arguments, "morvane-simulator: " + reason + "\n");
    }
    void ExpectAnswer(const std::vector<std::string>& arguments, const std::string& answer) {
        Console& console = Run(arguments);
        console.Expect(answer);
        console.ExpectExit(0);
    }

    PrivateBus bus_;
};

TEST_F(Tell, FailsIfNoSimulatorRuns) {
    ExpectRefusal({"--tell=phones"}, "No simulator is running");
}

TEST_F(Tell, PrintsTheAnswersUntilACommandFails) {
    RunExec({"--phones=1"});
    Console& console = Run({"--tell", "phones", "--tell=nonsense", "--tell=phones"});
    console.Expect(kPhoneLine);
    console.ExpectError("morvane-simulator: Unknown command: nonsense");
    console.ExpectExit(1);
}

TEST_F(Tell, ReachesSimulatorOnAnotherBus) {
    Serve(bus_.Address(), {"--phones=1"});
    ExpectAnswer({"--tell=phones"}, kPhoneLine);
    ExpectAnswer({"--tell=quit"}, kEnding);
}

TEST_F(Tell, TerminatesTheCommandByQuit) {
    Console& command = RunExec();
    ExpectAnswer({"--tell=quit"}, kEnding);
    command.ExpectEndBySignal(SIGTERM);
}

TEST_F(Tell, RequiresAChoiceAmongSeveralSimulators) {
    const Console* const simulators[] = {&RunExec(), &RunExec()};
    Console& console = Run({"--tell=phones"});
    console.ExpectError(
        "morvane-simulator: Several are running; choose by --simulator=PID or --instance=NAME:\n");
    console.AllowStderr("^  [0-9]+  com.veltrisonix  since ");
    console.ExpectExit(1);
    console.AwaitEndOfOutput();
    for (const Console* simulator : simulators)
        EXPECT_NE(console.Errors().find("\n  " + std::to_string(simulator->ProcessId()) + "  com"),
                  std::string::npos);
}

TEST_F(Tell, ChoosesByProcessOrInstance) {
    RunExec({"--phones=0"});
    const Console& second = RunExec({"--phones=1", "--instance=second"});
    ExpectAnswer({"--tell=phones", "--simulator=" + std::to_string(second.ProcessId())},
                 kPhoneLine);
    ExpectAnswer({"--tell=phones", "--instance=second"}, kPhoneLine);
    ExpectRefusal({"--tell=phones", "--simulator=1"}, "No such simulator is running");
    ExpectRefusal({"--tell=phones", "--instance=third"}, "No such simulator is running");
}

TEST_F(Tell, PrefersTheSimulatorOnTheBusOfItsEnvironment) {
    RunExec({"--phones=0"});
    ExpectAnswer({"--phones=1", "--exec", "sh", "-c", ProgramLine() + "--tell=phones"}, kPhoneLine);
}

TEST_F(Tell, ListsRunningSimulators) {
    Run({"--list"}).ExpectExit(0);
    const std::string id = std::to_string(RunExec().ProcessId());
    Console& one = Run({"--list"});
    one.Expect(id + "  com.veltrisonix  since ");
    one.Await("  unix:path=");
    one.Await("\n");
    one.ExpectExit(0);
}

TEST_F(Tell, RemovesTheFileOfAKilledSimulator) {
    Console& killed = RunExec();
    killed.Signal(SIGKILL);
    killed.AwaitEnd(morvane_test::Patience());
    ASSERT_TRUE(std::filesystem::exists(RuntimeFile(killed)));
    ExpectRefusal({"--tell=phones"}, "No simulator is running");
    EXPECT_FALSE(std::filesystem::exists(RuntimeFile(killed)));
}

TEST_F(Tell, ReportsAStoppedSimulator) {
    Console& console = Serve(bus_.Address());
    console.Signal(SIGSTOP);
    siginfo_t stopped;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(console.ProcessId()), &stopped, WSTOPPED | WNOWAIT),
              0);
    ExpectRefusal({"--tell=phones"}, "The simulator " + std::to_string(console.ProcessId()) +
                                         " is stopped, and cannot answer until it continues");
    console.Signal(SIGCONT);
    Quit(console);
}

TEST_F(Tell, RefusesADirectoryThatIsOpenToOthers) {
    std::filesystem::create_directory(RuntimeFolder());
    std::filesystem::permissions(RuntimeFolder(), std::filesystem::perms::all);
    const std::string complaint = RuntimeFolder() + " is not a directory of this user alone";
    ExpectRefusal({"--tell=phones"}, complaint);
    Console& console = Serve(bus_.Address());
    console.ExpectError("morvane-simulator: It cannot be controlled by --tell: " + complaint);
    Quit(console);
}

TEST_F(Tell, CannotBeCombinedWithOptionsForServing) {
    ExpectRefusal({"--tell=phones", "--phones=1"},
                  "--phones=1 cannot be combined with --tell or --list");
    ExpectRefusal({"--list", "--exec", "true"}, "--exec cannot be combined with --tell or --list");
    ExpectRefusal({"--list", "--tell=phones"}, "--list cannot be combined with --tell");
    ExpectRefusal({"--simulator=1"}, "--simulator needs --tell");
}

TEST_F(Tell, SignalRemovesTheRuntimeFile) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        Console& console = Serve(bus_.Address());
        EXPECT_TRUE(std::filesystem::exists(RuntimeFile(console)));
        console.Signal(signal);
        console.ExpectExit(0);
        EXPECT_FALSE(std::filesystem::exists(RuntimeFolder()));
    }
}

TEST_F(Tell, FindsASimulatorThatIgnoresAHangUp) {
    morvane_test::ConsoleOptions options = RunningProgram({"--phones=1"});
    options.bus_address = bus_.Address();
    options.ignore_hang_up = true;
    Console& console = Launch(options);
    console.Expect("Serving com.veltrisonix\n");
    console.Signal(SIGHUP);
    ExpectAnswer({"--tell=phones"}, kPhoneLine);
    Quit(console);
}

}  // namespace
}  // namespace simulator
