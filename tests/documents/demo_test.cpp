// Runs scripts/demo with the programs of this build.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "support/file_descriptor.h"
#include "support/messages.h"
#include "support/odd_directories.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <filesystem>
#include <iostream>
#include <string_view>

namespace morvane_test {
namespace {

constexpr char kWaiting[] = "Waiting for another build in ";
constexpr char kFilename[] = "Filename: ";

// Stub for CMake: fails if another build is running or the lock was inherited. If there is a
// pipe "go", the build ends when it can read a line from it.
constexpr char kCmake[] = R"(
mkdir build/busy || exit
! readlink /proc/$$/fd/* | grep build/demo/lock || exit
if [ -p go ]; then read line <go; rm -f go; fi
rmdir build/busy
)";

class Demo : public testing::Test {
  protected:
    Console& Run(const std::string& arguments = "") {
        return consoles_.emplace_back(tree_.Running("scripts/demo " + arguments, Wiring::kPipes));
    }
    const ScriptTree& tree() const { return tree_; }

    void TearDown() override {
        for (Console& console : consoles_) {
            if (HasFailure()) std::cout << console.FailureReport();
            console.Finish();
        }
    }

  private:
    ScriptTree tree_;
    std::deque<Console> consoles_;
};

// A phone is reported before it can be chosen, but after earlier phones can be chosen. The examples
// choose one of the first two.
void AwaitPhones(Console& console) {
    for (int phone = 0; phone < 3; ++phone) console.Await("Found Device ");
}

TEST_F(Demo, WaitsForAnotherBuildInSameFolder) {
    tree().Write("bin/cmake", kCmake);
    const std::string path = tree().File("go");
    Checked(mkfifo(path.c_str(), S_IRUSR | S_IWUSR), "mkfifo");
    const FileDescriptor go(Checked(open(path.c_str(), O_RDWR | O_CLOEXEC), "open"));
    Console& first = Run();
    first.Expect("Building the tool and its simulator ...\n");
    Console& second = Run();
    second.Expect(kWaiting + tree().File("build/demo") + " ...\n");

    ASSERT_EQ(write(go.Number(), "\n", 1), 1);
    second.Expect("Building the tool and its simulator ...\n");
    for (Console* console : {&first, &second}) console->Await(Prompt());
}

TEST_F(Demo, DoesNotWaitForRunningDemo) {
    Run().Await(Prompt());
    Run().Expect("Building the tool and its simulator ...\n");
}

TEST_F(Demo, PrintsSimulatorHelpWithoutBus) {
    for (const char* const arguments : {"-h", "--help", "--phones=1 --help"}) {
        Console& console = Run(arguments);
        console.Await("Usage:\n");
        console.Await("--phones=N");
        console.ExpectExit(0, Console::Rest::kIgnored);
    }
}

TEST_F(Demo, FailsIfDependenciesAreMissing) {
    tree().Write("scripts/install-dependencies", "echo refused; exit 1");
    Console& console = Run();
    console.Expect("refused\n");
    console.ExpectExit(1);
}

TEST_F(Demo, FailsIfBuildFolderIsNotWritable) {
    std::filesystem::remove_all(tree().File("build/demo"));
    tree().Write("build/demo", "");
    Console& console = Run();
    console.Expect("This user cannot build in " + tree().File("build/demo") +
                   ": remove it, or make it writable\n");
    console.ExpectExit(1);
}

TEST_F(Demo, PassesInstanceToTool) {
    for (const char* const arguments :
         {"--instance=second", "--instance second", "--phones=1 --instance x --instance=second"}) {
        Console& console = Run(arguments);
        console.Await("Found Client /com/veltrisonix/obex\n");
        console.Await(Prompt());
    }
}

TEST_F(Demo, SendsCommandToRunningDemoWithoutBuilding) {
    Run("--phones=1").Await(Prompt());
    Console& console = Run("--tell phones");
    console.Expect("/com/veltrisonix/hci0/dev_02_00_5E_10_00_01  02:00:5E:10:00:01  Aster\n");
    console.ExpectExit(0);
}

TEST_F(Demo, RunsOtherCommandInsteadOfTool) {
    Console& console = Run("--phones=1 --exec echo --tell");
    console.Expect("Building the tool and its simulator ...\n--tell\n");
    console.ExpectExit(0);
}

TEST_F(Demo, DisplaysAnswersOfFile) {
    Console& console = Run("<'" + SourcePath("examples/find-card.keys") + "'");
    console.Await(Prompt() + "c\n");
    console.Await(ValuePrompt("/Search Value") + "Nowak\n");
    console.Await(Prompt() + "q\n");
    console.ExpectExit(0);
}

class PlayedKeys : public testing::TestWithParam<std::string> {};

TEST_P(PlayedKeys, LeaveTheSessionAndQuit) {
    const ScriptTree tree;
    Console console(tree.Running("scripts/demo"));
    AwaitPhones(console);
    console.TypeBytes(ReadSource(GetParam()));
    console.ExpectExit(0, Console::Rest::kIgnored);
    constexpr std::string_view kEnd = "\nVantor/Phonebook Menu > x\nVantor > q\n";
    const std::string seen = AsSeen(console.Output());
    EXPECT_EQ(seen.substr(seen.size() - std::min(seen.size(), kEnd.size())), kEnd);
}

INSTANTIATE_TEST_SUITE_P(Examples, PlayedKeys,
                         testing::ValuesIn(FindSources("^examples/.*\\.keys$")),
                         [](const auto& keys) { return AsTestName(keys.param); });

class DemoInDirectory : public Demo, public testing::WithParamInterface<OddDirectory> {};

TEST_P(DemoInDirectory, PullsPhonebookAndRemovesTemporaryFiles) {
    const std::string directory = tree().File(GetParam().name);
    std::filesystem::create_directory(directory);
    ConsoleOptions options = tree().Running("scripts/demo", Wiring::kPipes);
    options.environment = {"TMPDIR=" + directory};
    Console console(options);
    AwaitPhones(console);
    for (const char* const key : {"c", "0", "s", "0", "0", "a", "d"}) console.Type(key);
    console.Await(kFilename);
    console.Await("/phonebook.vcf\n");
    const std::string output = console.Consumed();
    const std::size_t begin = output.rfind(kFilename) + std::strlen(kFilename);
    const std::string folder = output.substr(begin, output.rfind('/') - begin);
    console.CloseInput();
    console.ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_FALSE(std::filesystem::exists(folder)) << folder;
    EXPECT_TRUE(std::filesystem::is_empty(directory));
}

INSTANTIATE_TEST_SUITE_P(, DemoInDirectory, testing::ValuesIn(kOddDirectories),
                         [](const auto& directory) { return directory.param.test; });

}  // namespace
}  // namespace morvane_test
