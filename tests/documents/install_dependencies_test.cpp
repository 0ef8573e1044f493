// scripts/install-dependencies where nothing that it asks for is installed. What would change the
// machine is replaced by scripts that print how they were called.

#include "documents/document.h"
#include "interfaces/glib_ptr.h"
#include "support/console.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

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

// Asks on the terminal, as sudo does, whatever standard input and output are.
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

class InstallDependencies : public testing::Test {
  protected:
    InstallDependencies() {
        std::filesystem::create_directory(directory_.File("bin"));
        for (const char* const name : {"bash", "cat", "dirname", "env", "grep", "mkdir", "realpath",
                                       "sleep", "tail", "tr", "true"}) {
            const morvane::TextPtr path(g_find_program_in_path(name));
            std::filesystem::create_symlink(path.get(), directory_.File("bin/") + name);
        }
        Write("id", "echo 1000\n");
        Write("apt-get", "echo apt-get \"$@\" >>calls\n");
        Write("apt-cache", "");
    }

    void Write(const std::string& name, const std::string& script) const {
        const std::string path = directory_.File("bin/" + name);
        std::ofstream(path) << "#!/bin/sh\n" << script;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    Console& Run(Wiring wiring, const std::string& purpose = "build") {
        ConsoleOptions options;
        options.program = "/bin/sh";
        options.arguments = {"-c", "PATH=$PWD/bin exec '" +
                                       SourcePath("scripts/install-dependencies") + "' " + purpose +
                                       " 2>&1"};
        options.wiring = wiring;
        options.directory = directory_.Path();
        return console_.emplace(options);
    }

    // The calls of the replaced commands that would change the machine.
    std::string Calls() const {
        std::ifstream file(directory_.File("calls"));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void TearDown() override {
        if (HasFailure() && console_) std::cout << console_->Story();
        if (console_) console_->Finish();
    }

  private:
    TemporaryDirectory directory_;
    std::optional<Console> console_;
};

TEST_F(InstallDependencies, InstallsAsRootWithoutSudo) {
    Write("id", "echo 0\n");
    Console& console = Run(Wiring::kPipes);
    console.Expect(kInstalling);
    console.ExpectExit(0);
    EXPECT_EQ(Calls(), kUpdate + kInstall);
}

TEST_F(InstallDependencies, InstallsWithSudoThatNeedsNoPassword) {
    Write("sudo", kSudoWithoutPassword);
    Console& console = Run(Wiring::kPipes);
    console.Expect(kInstalling);
    console.ExpectExit(0);
    EXPECT_EQ(Calls(), kUpdate + kInstall);
}

TEST_F(InstallDependencies, ShowsThePasswordPromptOfSudo) {
    Write("sudo", kSudoWithPassword);
    Console& console = Run(Wiring::kPersonsTerminal);
    console.Expect(kPrompt);
    console.Type("right");
    console.Expect("right\n" + kInstalling);
    console.ExpectExit(0);
    EXPECT_EQ(Calls(), "validate\n" + kUpdate + kInstall);
}

TEST_F(InstallDependencies, PrintsTheCommandForAnAdministratorIfSudoRefuses) {
    Write("sudo", kSudoWithPassword);
    Console& console = Run(Wiring::kPersonsTerminal);
    console.Expect(kPrompt);
    console.Type("wrong");
    console.Expect("wrong\n" + kRefusal);
    console.ExpectExit(1);
    EXPECT_EQ(Calls(), "validate\n");
}

TEST_F(InstallDependencies, PrintsTheCommandForAnAdministratorWithoutSudo) {
    Console& console = Run(Wiring::kPersonsTerminal);
    console.Expect(kRefusal);
    console.ExpectExit(1);
    EXPECT_EQ(Calls(), "");
}

TEST_F(InstallDependencies, RefusesASecondPurpose) {
    Console& console = Run(Wiring::kPipes, "build demo");
    console.Await("Usage: scripts/install-dependencies build|demo|");
    console.ExpectExit(2, Console::Rest::kIgnored);
    EXPECT_EQ(Calls(), "");
}

TEST_F(InstallDependencies, DoesNotAskForAPasswordWithoutTerminal) {
    Write("sudo", kSudoWithPassword);
    Console& console = Run(Wiring::kPipes);
    console.Expect(kRefusal);
    console.ExpectExit(1);
    EXPECT_EQ(Calls(), "");
}

}  // namespace
}  // namespace morvane_test
