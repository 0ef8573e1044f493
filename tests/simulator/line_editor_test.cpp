#include "simulator/program_fixture.h"

#include "support/gdbus.h"
#include "support/private_bus.h"

#include <gtest/gtest.h>

#include <fstream>

namespace simulator {
namespace {

constexpr char kTab[] = "\t";
constexpr char kCursorUp[] = "\x1b[A";
constexpr char kControlD[] = "\x04";
constexpr char kBirchIsOut[] =
    "Birch is out of reach: shown at once; an open session ends at the next answer\n";

class PlainInput : public ProgramTest {
  protected:
    /// Runs a program on the test's bus.
    Console& RunOnBus(morvane_test::ConsoleOptions options) {
        options.bus_address = bus_.Address();
        return Launch(options);
    }

    morvane_test::PrivateBus bus_;
};

class LineEditor : public PlainInput {
  protected:
    void SetUp() override {
        if (!MORVANE_LINE_EDITING) GTEST_SKIP() << "built without libedit";
    }

    /// Starts the simulator on a terminal and waits for the first prompt.
    Console& Edit(const std::vector<std::string>& arguments = {}) {
        Console& console = RunOnBus(RunningProgram(arguments, Wiring::kInteractiveTerminal));
        console.Await("Serving com.veltrisonix\n");
        console.Await("> ");
        return console;
    }

    /// Runs the shell commands `before`, the simulator, a comparison of the terminal's modes, and
    /// `after`.
    Console& EditInShell(const std::string& before, const std::string& after = "") {
        const std::string script = before + "; modes=$(stty -g); " + ProgramLine() +
                                   "; [ \"$modes\" = \"$(stty -g)\" ] && echo the same" + after;
        return RunOnBus(Running({"sh", "-c", script}, Wiring::kInteractiveTerminal));
    }

    static void EndByQuit(Console& console) {
        console.TypeBytes("quit\n");
        console.Await(kEnding);
        console.ExpectExit(0);
    }
};

TEST_F(LineEditor, ListsCommandsWithTheSameBeginning) {
    Console& console = Edit();
    console.TypeBytes(std::string("content") + kTab);
    console.Await("content  content-file\n");
    console.Await("> content");
    console.TypeBytes("-f\t");
    console.Await("ile ");
    console.TypeBytes("\x15");
    EndByQuit(console);
}

TEST_F(LineEditor, CompletesCommandsAndArgumentsByTheirKind) {
    std::ofstream(directory_.File("strange.vcf")) << "BEGIN:VCARD";
    Console& console = Edit();
    for (const auto& [keys, answer] :
         {std::pair("pho\t\n", "Aster\n"), std::pair("help pho\t\n", "Usage: phones\n"),
          std::pair("remove bi\t\n", kBirchIsOut),
          std::pair("miss-call Zoë\t123\n", "Zoë's Clover has missed a call from 123"),
          std::pair("log of\t\n", "The log of calls is off already\n"),
          std::pair("hang GetSi\t\n", "GetSize gets no answer"),
          std::pair("hide * Dev\tAli\t\n",
                    "Alias of all objects is missing: shown when the object is next found"),
          std::pair("content-file str\t\n", "strange.vcf: shown with the next pull")}) {
        console.TypeBytes(keys);
        console.Await(answer);
    }
    EndByQuit(console);
}

TEST_F(LineEditor, RecallsTheLastLineByCursorUp) {
    Console& console = Edit();
    console.TypeBytes("remove Birch\n");
    console.Await(kBirchIsOut);
    console.TypeBytes("return Birch\n");
    console.Await("Birch is back in reach");
    console.TypeBytes(std::string(kCursorUp) + kCursorUp + "\n");
    console.Await(kBirchIsOut);
    EndByQuit(console);
}

TEST_F(LineEditor, RedisplaysTheTypedLineBelowALogLine) {
    Console& console = Edit({"--do=log on"});
    console.TypeBytes("remove Bir");
    console.Await("remove Bir");
    morvane_test::Gdbus(bus_.Address(), "com.veltrisonix", "/",
                        "org.freedesktop.DBus.ObjectManager.GetManagedObjects");
    console.Await("\r\x1b[J");
    console.Await("GetManagedObjects");
    console.Await("\n> remove Bir");
    console.TypeBytes("ch\n");
    console.Await(kBirchIsOut);
    EndByQuit(console);
}

TEST_F(LineEditor, KeepsServingAfterControlD) {
    Console& console = Edit();
    console.TypeBytes(kControlD);
    console.Await("\n");
    Run({"--tell=phones"}).ExpectExit(0, Console::Rest::kIgnored);
    console.Signal(SIGTERM);
    console.ExpectExit(0, Console::Rest::kIgnored);
}

TEST_F(LineEditor, EndsByControlCAfterALoneEscape) {
    Console& console = Edit();
    console.TypeBytes("rem");
    console.Await("rem");
    console.TypeBytes("\x1b\x03");
    console.ExpectExit(0, Console::Rest::kIgnored);
}

// The shell does not restore the terminal's modes itself.
TEST_F(LineEditor, EditsTheSameLineAfterControlZ) {
    Console& console = EditInShell("set -m", "; fg");
    console.Await("> ");
    console.TypeBytes("remove Bir");
    console.Await("remove Bir");
    console.TypeBytes("\x1a");
    console.Await("the same\n");
    console.Await("> remove Bir");
    console.TypeBytes("\t");
    console.Await("ch ");
    console.TypeBytes("\n");
    console.Await(kBirchIsOut);
    EndByQuit(console);
}

// Runs the simulator in a shell, which keeps the terminal open after it.
TEST_F(LineEditor, RestoresTheTerminalOnEveryExit) {
    constexpr char kNone[] = "";  // the bus is lost
    for (const char* const keys : {"quit\n", "\x03", "\x1c", kNone}) {
        Console& console = EditInShell("trap : INT QUIT; ulimit -c 0");
        console.AllowStderr("Quit");
        console.AllowStderr("The connection to the bus was lost");
        console.Await("> ");
        *keys == '\0' ? bus_.Kill() : console.TypeBytes(keys);
        console.Await("the same\n");
        console.ExpectExit(0);
    }
}

TEST_F(PlainInput, IsReadFromAPipeAndADumbTerminal) {
    for (const Wiring wiring : {Wiring::kPipes, Wiring::kTerminal}) {
        auto options = RunningProgram({}, wiring);
        options.prefix = {"env", "TERM=dumb"};
        Console& console = RunOnBus(options);
        console.Expect("Serving com.veltrisonix\n");
        console.Type("remove Birch");
        console.Expect(kBirchIsOut);
        Quit(console);
    }
}

}  // namespace
}  // namespace simulator
