// The simulator with a command in the foreground.

#include "simulator/program_fixture.h"
#include "support/private_bus.h"

#include <csignal>
#include <fstream>
#include <tuple>

namespace simulator {
namespace {

using morvane_test::CallOnBus;
using morvane_test::ConnectToBus;

class Exec : public ProgramTest {
  protected:
    Console& RunShell(const std::string& script, const std::vector<std::string>& options = {},
                      Wiring wiring = Wiring::kPipes) {
        std::vector<std::string> words = options;
        words.insert(words.end(), {"--exec", "sh", "-c", script});
        return Run(words, wiring);
    }

    /// The next line of output.
    static std::string NextLine(Console& console) {
        console.Await("\n");
        std::string output = console.Consumed();
        output.pop_back();
        return output.substr(output.rfind('\n') + 1);
    }

    static pid_t BusProcess(const std::string& address) {
        const auto connection = ConnectToBus(address);
        const morvane::VariantPtr reply =
            CallOnBus(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                      "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                      g_variant_new("(s)", "org.freedesktop.DBus"));
        guint32 process = 0;
        g_variant_get(reply.get(), "(u)", &process);
        return static_cast<pid_t>(process);
    }

    static bool Runs(pid_t process) { return kill(process, 0) == 0; }

    void ExpectNothingLeft() const { EXPECT_TRUE(std::filesystem::is_empty(TemporaryFolder())); }
};

TEST_F(Exec, ExitsWithTheStatusOfTheCommand) {
    for (const int status : {0, 3}) {
        RunShell("exit " + std::to_string(status)).ExpectExit(status);
        ExpectNothingLeft();
    }
}

TEST_F(Exec, EndsByTheSignalThatEndsTheCommand) {
    for (const int signal : {SIGTERM, SIGKILL, SIGSEGV}) {
        RunShell("kill -" + std::to_string(signal) + " $$").ExpectEndBySignal(signal);
        ExpectNothingLeft();
        EXPECT_FALSE(std::filesystem::exists(directory_.File("core")));
    }
}

// On Ctrl-C bash leaves a loop only if SIGINT ended the command in it.
TEST_F(Exec, ControlCEndsALoopInTheCallingShell) {
    const std::string script = "for i in 1 2; do " + ProgramLine() +
                               "--exec sh -c 'echo ready; read line'; done; echo after";
    Console& console = Launch(Running({"bash", "-c", script}, Wiring::kTerminal));
    console.Expect("ready\n");
    console.TypeBytes("\x03");
    console.ExpectEndBySignal(SIGINT, Console::Rest::kNone);
    ExpectNothingLeft();
}

TEST_F(Exec, ReportsACommandThatItCannotStart) {
    const std::string script = directory_.File("script");
    std::ofstream(script) << "#!/no/such\n";
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    const std::tuple<std::vector<std::string>, std::string, int> rows[] = {
        {{"--exec"}, "--exec needs a command", 1},
        {{"--exec", "no-such-command"}, "No such command: no-such-command", 127},
        {{"--exec", "/dev/null"}, "Cannot execute /dev/null", 126},
        {{"--exec", script}, "Cannot execute " + script + ": its interpreter does not exist", 126},
        {{"--do=dance", "--exec", "echo"}, "Unknown command: dance (try help)", 1},
    };
    for (const auto& [arguments, reason, status] : rows) {
        ExpectFailure(arguments, "morvane-simulator: " + reason + "\n", status);
        ExpectNothingLeft();
    }
}

TEST_F(Exec, PassesOptionsAfterTheCommandToIt) {
    Console& console = Run({"--phones=1", "--exec", "echo", "--help", "--exec", "\xff"});
    console.Expect("--help --exec \xff\n");
    console.ExpectExit(0);
}

TEST_F(Exec, ServesOnABusOfItsOwn) {
    Console& console = RunShell(
        "gdbus call --system --dest com.veltrisonix --object-path /"
        " --method org.freedesktop.DBus.ObjectManager.GetManagedObjects");
    console.Await("02:00:5E:10:00:03");
    console.ExpectExit(0, Console::Rest::kIgnored);
}

// Prints signal mask, ignored signals, descriptors and environment, without the bus address.
constexpr char kSurroundings[] =
    "grep -E 'Sig(Blk|Ign)' /proc/self/status; ls /proc/self/fd; env | grep -v BUS_ADDRESS | sort";

// GLib sets the default actions of these signals in its child processes.
TEST_F(Exec, PreservesSignalsDescriptorsAndEnvironment) {
    std::string output;
    for (const auto& options : {Running({"sh", "-c", kSurroundings}),
                                RunningProgram({"--exec", "sh", "-c", kSurroundings})}) {
        morvane_test::ConsoleOptions undisturbed = options;
        undisturbed.prefix = {"env", "--ignore-signal=PIPE,HUP,INT,TERM"};
        Console& console = Launch(undisturbed);
        console.Expect(output);
        console.ExpectExit(0, output.empty() ? Console::Rest::kIgnored : Console::Rest::kNone);
        output = console.Output();
    }
}

TEST_F(Exec, LeavesInputAndOutputToTheCommand) {
    Console& console = RunShell("cat", {"--do=phones"});
    console.Type("phones");
    console.Expect("phones\n");
    console.CloseInput();
    console.ExpectExit(0);
}

TEST_F(Exec, DoesNotStartTheCommandAfterQuit) {
    RunShell("echo started", {"--do=quit"}).ExpectExit(0);
    ExpectNothingLeft();
}

TEST_F(Exec, StopsTheBusAtTheEnd) {
    Console& console = RunShell("echo $DBUS_SYSTEM_BUS_ADDRESS; read line");
    const pid_t bus = BusProcess(NextLine(console));
    EXPECT_TRUE(Runs(bus));
    console.Type("");
    console.ExpectExit(0);
    EXPECT_FALSE(Runs(bus));
}

TEST_F(Exec, StopsTheBusIfItIsKilled) {
    Console& console = RunShell("echo $DBUS_SYSTEM_BUS_ADDRESS; read line");
    const auto connection = ConnectToBus(NextLine(console));
    bool closed = false;
    g_signal_connect(connection.get(), "closed",
                     G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, bool* is_closed) {
                         *is_closed = true;
                     }),
                     &closed);
    console.Signal(SIGKILL);
    while (!closed) g_main_context_iteration(nullptr, TRUE);
    console.CloseInput();  // ends the command, which is still running
    console.ExpectEndBySignal(SIGKILL);
}

TEST_F(Exec, TerminatesTheCommandIfTheBusEnds) {
    Console& console = RunShell(
        "trap 'echo terminated; exit 0' TERM; echo $DBUS_SYSTEM_BUS_ADDRESS; "
        "while :; do read line; done");
    kill(BusProcess(NextLine(console)), SIGKILL);
    console.ExpectError("morvane-simulator: The connection to the bus was lost\n");
    console.Expect("terminated\n");
    console.ExpectExit(1);
    ExpectNothingLeft();
}

// Prints signals, which interrupt `read`, and lines. Exits after the line "end" or 100 reads.
constexpr char kCounter[] =
    "for name in HUP INT QUIT TERM; do trap \"echo $name\" $name; done; echo ready; "
    "reads=0; while [ \"$line\" != end ] && [ $((reads += 1)) -lt 100 ]; do "
    "read line && echo \"read $line\"; done; exit 4";

TEST_F(Exec, ForwardsSignalsOfOtherProcesses) {
    Console& console = RunShell(kCounter);
    console.Expect("ready\n");
    for (const auto& [signal, name] :
         {std::pair(SIGHUP, "HUP\n"), std::pair(SIGINT, "INT\n"), std::pair(SIGQUIT, "QUIT\n"),
          std::pair(SIGTERM, "TERM\n")}) {
        console.Signal(signal);
        console.Expect(name);
    }
    console.Type("end");
    console.Expect("read end\n");
    console.ExpectExit(4);
    ExpectNothingLeft();
}

TEST_F(Exec, LeavesControlCAndControlBackslashToTheCommand) {
    Console& console = RunShell(kCounter, {}, Wiring::kTerminal);
    console.Expect("ready\n");
    for (const auto& [key, name] : {std::pair("\x03", "INT\n"), std::pair("\x1c", "QUIT\n")}) {
        console.TypeBytes(key);
        console.Expect(name);
        console.Type("next");
        console.Expect("read next\n");
    }
    console.Type("end");
    console.Expect("read end\n");
    console.ExpectExit(4);
}

TEST_F(Exec, EndsWhenItsTerminalHangsUp) {
    Console& console = RunShell("echo $$; exec sleep 1000", {}, Wiring::kTerminal);
    NextLine(console);
    console.HangUp();
    console.ExpectEndBySignal(SIGHUP);
    ExpectNothingLeft();
}

// The shell's terminal is its standard error.
TEST_F(Exec, StopsAndContinuesWithTheCommand) {
    const std::string script = "exec 2>&1; set -m; " + ProgramLine() +
                               "--exec sh -c 'echo ready; read line; echo \"got $line\"; exit 5'; "
                               "echo \"stopped $?\"; fg >fg.output; echo \"ended $?\"";
    Console& console = Launch(Running({"bash", "-c", script}, Wiring::kTerminal));
    console.Expect("ready\n");
    console.TypeBytes("\x1a");
    console.Await("stopped 147\n");
    console.Type("word");
    console.Expect("got word\nended 5\n");
    console.ExpectExit(0);
    ExpectNothingLeft();
}

}  // namespace
}  // namespace simulator
