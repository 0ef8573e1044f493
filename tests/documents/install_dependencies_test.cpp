// Runs scripts/install-dependencies with no dependency installed. Commands that would change the
// machine are replaced by scripts that record their arguments.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "interfaces/glib_ptr.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace morvane_test {
namespace {

constexpr char kPackages[] = "g++ cmake ninja-build pkg-config libglib2.0-dev libglib2.0-dev-bin";
const std::string kUpdate = "apt-get update\n";
const std::string kInstall =
    std::string("apt-get install --yes --no-install-recommends ") + kPackages + "\n";

const std::string kInstalling =
    std::string("Updating the list of packages ...\nInstalling ") + kPackages + " ...\n";
const std::string kPrompt = std::string("To install ") + kPackages + ":\nPassword: ";
const std::string kRefusal =
    "Packages are missing that this user may not install. Ask an administrator to run:\n"
    "apt-get update && " +
    kInstall;

constexpr char kSudoWithoutPassword[] = R"(
[ "$1" != --non-interactive ] || shift
exec "$@"
)";

// Asks on the controlling terminal, as sudo does.
constexpr char kSudoWithPassword[] = R"(
if [ "$1" = --validate ]; then
    echo validate >>calls
    printf 'Password: ' >/dev/tty
    read password </dev/tty
    [ "$password" != right ] || : >validated
fi
[ -e validated ] || exit
[ "$1" = --validate ] || exec "$@"
)";

struct Machine {
    const char* test;
    const char* user_id;
    const char* sudo;  ///< null: not installed
    Wiring wiring;
    std::string password;  ///< empty: not asked for
    bool installs;
};

const Machine kMachines[] = {
    {"InstallsAsRootWithoutSudo", "0", nullptr, Wiring::kPipes, "", true},
    {"InstallsWithSudoThatNeedsNoPassword", "1000", kSudoWithoutPassword, Wiring::kPipes, "", true},
    {"ShowsPasswordPromptOfSudo", "1000", kSudoWithPassword, Wiring::kInteractiveTerminal, "right",
     true},
    {"PrintsTheCommandIfSudoRefuses", "1000", kSudoWithPassword, Wiring::kInteractiveTerminal,
     "wrong", false},
    {"PrintsTheCommandWithoutSudo", "1000", nullptr, Wiring::kInteractiveTerminal, "", false},
    {"DoesNotAskForAPasswordWithoutTerminal", "1000", kSudoWithPassword, Wiring::kPipes, "", false},
};

// Starts the script with no commands but those that every Debian has.
std::string Bare(const ScriptTree& tree, const char* user_id) {
    for (const char* const name : {"bash", "cat", "dirname", "env", "grep", "mkdir", "realpath",
                                   "sed", "sleep", "tail", "tr", "true"}) {
        const morvane::TextPtr path(g_find_program_in_path(name));
        std::filesystem::create_symlink(path.get(), tree.File("bin/") + name);
    }
    tree.Write("bin/id", std::string("echo ") + user_id);
    tree.Write("bin/apt-get", "echo apt-get \"$@\" >>calls\n");
    tree.Write("bin/apt-cache", "");
    std::filesystem::remove(tree.File("bin/cmake"));
    return "env PATH=$PWD/bin '" + SourcePath("scripts/install-dependencies") + "' ";
}

class InstallDependencies : public testing::TestWithParam<Machine> {};

TEST_P(InstallDependencies, InstallsOrPrintsCommandForAdministrator) {
    const Machine& machine = GetParam();
    const ScriptTree tree;
    const std::string script = Bare(tree, machine.user_id);
    if (machine.sudo) tree.Write("bin/sudo", machine.sudo);

    Console console(tree.Running(script + "build", machine.wiring));
    if (!machine.password.empty()) {
        console.Expect(kPrompt);
        console.Type(machine.password);
        console.Expect(machine.password + "\n");
    }
    console.Expect(machine.installs ? kInstalling : kRefusal);
    console.ExpectExit(machine.installs ? 0 : 1);
    std::ifstream calls(tree.File("calls"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(calls), {}),
              (machine.password.empty() ? "" : "validate\n") +
                  (machine.installs ? kUpdate + kInstall : ""));
}

TEST(InstallDependenciesFor, AcceptsExactlyOnePurpose) {
    const std::string script = "'" + SourcePath("scripts/install-dependencies") + "'";
    const std::string usage = ScriptTree().OutputOf(script, 2);
    EXPECT_EQ(usage.find("Usage: scripts/install-dependencies build|demo|"), 0U) << usage;
    EXPECT_EQ(ScriptTree().OutputOf(script + " build demo", 2), usage);
}

TEST(InstallDependenciesFor, TestListsPackagesWithoutErrorsOfMissingCommands) {
    const ScriptTree tree;
    const std::string output = tree.OutputOf(Bare(tree, "1000") + "test", 1);
    EXPECT_NE(output.find(" clang libclang-rt-dev "), output.npos) << output;
    EXPECT_EQ(output.find("command not found"), output.npos) << output;
}

INSTANTIATE_TEST_SUITE_P(, InstallDependencies, testing::ValuesIn(kMachines),
                         [](const auto& machine) { return std::string(machine.param.test); });

}  // namespace
}  // namespace morvane_test
