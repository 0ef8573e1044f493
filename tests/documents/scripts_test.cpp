// Output of the scripts for developers.

#include "documents/document.h"
#include "documents/script_tree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace morvane_test {
namespace {

constexpr char kLogOfTests[] = R"(      Start 12: StartUp.Greets
 1/4 Test  #12: StartUp.Greets ...............   Passed    0.71 sec
      Start 13: StartUp.AsksForAKey
 2/4 Test  #13: StartUp.AsksForAKey ..........***Failed    1.20 sec
Running main() from ./googletest/src/gtest_main.cc
Note: Google Test filter = StartUp.AsksForAKey
[==========] Running 1 test from 1 test suite.
[ RUN      ] StartUp.AsksForAKey
startup_test.cpp:7: Failure
unexpected output.
Expected:
one
Not yet consumed:
two

Command line: build/morvane
(exit status 0)
---- Output
[  FAILED  ] StartUp.AsksForAKey (1190 ms)

 3/4 Test  #14: Fuzz.uuid ....................***Timeout 120.01 sec
 4/4 Test  #15: StartUp.IsQuick ..............***Skipped   0.01 sec
startup_test.cpp:9: Skipped
)";

constexpr char kFailuresOfTests[] = R"(  StartUp.AsksForAKey ***Failed    1.20 sec
      startup_test.cpp:7: Failure
      unexpected output.
      Expected:
      one
      Not yet consumed:
      two
      Command line: build/morvane
      (exit status 0)
  Fuzz.uuid ***Timeout 120.01 sec
All of it is in log
)";

constexpr char kLogOfBuild[] = R"([1/3] Building CXX object uuid.cpp.o
FAILED: uuid.cpp.o
/usr/bin/c++ -Werror -c uuid.cpp
uuid.cpp: In function 'int main()':
uuid.cpp:3:5: error: 'x' was not declared in this scope
    3 |     x = 1;
ninja: build stopped: subcommand failed.
)";

class Scripts : public testing::Test {
  protected:
    void WriteText(const std::string& name, const std::string& text) const {
        std::ofstream(tree_.File(name)) << text;
    }

    /// Runs these lines of bash with the functions of scripts/quietly.sh.
    ConsoleOptions Steps(const std::string& lines, Wiring wiring) const {
        WriteText("steps", "source scripts/quietly.sh\n" + lines);
        return tree_.Running("bash steps", wiring);
    }

    std::string FailuresIn(const std::string& log) const {
        WriteText("log", log);
        return tree_.OutputOf("scripts/failures log", 0);
    }

    ScriptTree tree_;
};

TEST_F(Scripts, FailuresListsFailedTestsWithFirstLines) {
    EXPECT_EQ(FailuresIn(kLogOfTests), kFailuresOfTests);
}

TEST_F(Scripts, FailuresListsAtMostTenTests) {
    std::string log;
    for (int number = 1; number <= 12; ++number)
        log += " 1/12 Test #" + std::to_string(number) + ": A ...***Failed  1 sec\nreason\n";
    std::string expected;
    for (int number = 1; number <= 10; ++number) expected += "  A ***Failed  1 sec\n      reason\n";
    EXPECT_EQ(FailuresIn(log), expected + "  and 2 more\nAll of it is in log\n");
}

TEST_F(Scripts, FailuresListsErrorsOfBuild) {
    EXPECT_EQ(FailuresIn(kLogOfBuild),
              "  FAILED: uuid.cpp.o\n"
              "  uuid.cpp:3:5: error: 'x' was not declared in this scope\n"
              "All of it is in log\n");
}

TEST_F(Scripts, FailuresListsLastLinesOfOtherLogs) {
    std::string log;
    std::string expected;
    for (int number = 1; number <= 20; ++number) {
        log += std::to_string(number) + "\n";
        if (number > 5) expected += "  " + std::to_string(number) + "\n";
    }
    EXPECT_EQ(FailuresIn(log), expected + "All of it is in log\n");
}

TEST_F(Scripts, TestReportsFailedStepAndContinues) {
    tree_.Write("scripts/picture", "echo 'x.cpp:1:1: error: no'; exit 1");
    const std::string output = tree_.OutputOf("scripts/test", 1);
    for (const char* const part :
         {"Checking the picture of a session failed:\n"
          "  x.cpp:1:1: error: no\n"
          "All of it is in build/logs/checking-the-picture-of-a-session.log\n",
          "\nFailed: Checking the picture of a session\n3 passed, 0 failed\n"})
        EXPECT_NE(output.find(part), output.npos) << output;
}

TEST_F(Scripts, TestStopsIfReleaseCannotBeBuilt) {
    tree_.Write("bin/cmake", "exit 1");
    EXPECT_EQ(tree_.OutputOf("scripts/test", 1),
              "Checking the format ...\n"
              "Building the release ...\n"
              "Building the release failed:\n"
              "All of it is in build/logs/building-the-release.log\n"
              "Failed: Building the release\n"
              "0 passed, 0 failed\n");
}

TEST_F(Scripts, QuickTestRunsMatchingTestsExceptSlowOnes) {
    tree_.Write("bin/ctest", "echo \"$@\" >arguments");
    EXPECT_EQ(tree_.OutputOf("scripts/test --quick Filter", 0),
              "Building the release ...\n"
              "Testing the release ...\n"
              "0 passed, 0 failed\n");
    std::ifstream arguments(tree_.File("arguments"));
    EXPECT_NE(std::string(std::istreambuf_iterator<char>(arguments), {})
                  .find("--tests-regex Filter --exclude-regex GivesUp|"),
              std::string::npos);
}

TEST_F(Scripts, ClangFormatOfFirstSupportedVersionIsUsed) {
    const std::string none =
        "Skipping the check: it needs clang-format 14, 19 or 21; this system has ";
    struct Row {
        std::map<std::string, std::string> versions;  // of installed commands
        int status;
        std::string output;
    };
    const Row rows[] = {
        {{{"clang-format", "19.1.7"}, {"clang-format-14", "14.0.6"}}, 0, "clang-format-14\n"},
        {{{"clang-format", "19.1.7"}}, 0, "clang-format\n"},
        {{{"clang-format", "13.0.1"}}, 1, none + "13\n"},
        {{}, 1, none + "none\n"},
    };
    const std::string find = "/bin/bash -c 'PATH=$PWD/bin; source \"" +
                             SourcePath("scripts/clang-versions.sh") +
                             "\"; find_clang_for \"the check\" clang-format'";
    for (const Row& row : rows) {
        const ScriptTree tree;
        std::filesystem::create_symlink("/bin/sed", tree.File("bin/sed"));
        for (const auto& [command, version] : row.versions)
            tree.Write("bin/" + command,
                       "echo 'Debian clang-format version " + version + " (version 3)'");
        EXPECT_EQ(tree.OutputOf(find, row.status), row.output);
    }
}

TEST(Benchmarks, PictureAgreesWithTheFigures) {
    EXPECT_EQ(ScriptTree().OutputOf("'" + SourcePath("benchmarks/picture") + "' --check", 0), "");
}

// Both counters are in one line, in any order.
TEST_F(Scripts, ParallelStepsShowProgressOnTerminal) {
    Console console(
        Steps("mkfifo gate\n"
              "count() { echo \"$1\"; cat gate; }\n"
              "begin First count '[3/7] Building CXX object'\n"
              "quietly Second count '1004/1726 Test #5: A'\n"
              "finish First\n"
              "echo Done\n",
              Wiring::kTerminal));
    console.Await("First ...\nSecond ...\n\r\x1b[K");
    console.AwaitAll({"First 3/7 (", "Second 1004/1726 ("});
    WriteText("gate", "");
    console.Await("\r\x1b[KDone\n");
    console.ExpectExit(0);
}

TEST_F(Scripts, ShortStepsShowNoProgress) {
    Console console(
        Steps("begin First true\n"
              "quietly Second true\n"
              "finish First\n",
              Wiring::kPipes));
    console.Expect("First ...\nSecond ...\n");
    console.ExpectExit(0);
}

// Commits in a repository of its own, with clang-format replaced by a search for a word.
class PreCommit : public testing::Test {
  protected:
    PreCommit() {
        for (const char* const name : {"scripts/pre-commit", "scripts/clang-versions.sh"})
            std::filesystem::create_symlink(SourcePath(name), tree_.File(name));
        tree_.Write("bin/clang-format-14",
                    "[ $1 != --version ] || { echo clang-format version 14.0.6; exit; }\n"
                    "! grep --quiet unformatted || { echo \"$3: unformatted\" >&2; exit 1; }\n");
        Run("git init --quiet && git config core.hooksPath scripts", 0);
    }
    std::string Run(const std::string& commands, int status) const {
        return tree_.OutputOf("sh -c '" + commands + "'", status);
    }
    static std::string Commit(const std::string& files) {
        return "git add " + files +
               " && git -c user.name=A -c user.email=a@b.invalid commit --quiet --message=x";
    }

    ScriptTree tree_;
};

TEST_F(PreCommit, RejectsUnformattedFilesAndNamesThem) {
    Run("echo unformatted >a.cpp; echo unformatted >b.h; echo good >c.h", 0);
    EXPECT_EQ(Run(Commit("a.cpp b.h c.h"), 1),
              "--assume-filename=a.cpp: unformatted\n"
              "--assume-filename=b.h: unformatted\n"
              "Run scripts/check-format --fix and stage the result.\n");
}

TEST_F(PreCommit, ChecksTheStagedContentInsteadOfTheWorkingTree) {
    Run("echo unformatted >a.cpp && git add a.cpp && echo good >a.cpp", 0);
    Run("echo good >\"b c.cpp\" && git add \"b c.cpp\" && echo unformatted >\"b c.cpp\"", 0);
    EXPECT_EQ(Run(Commit("scripts"), 1),
              "--assume-filename=a.cpp: unformatted\n"
              "Run scripts/check-format --fix and stage the result.\n");
    EXPECT_EQ(Run(Commit("a.cpp"), 0), "");
}

TEST_F(PreCommit, ChecksOnlyStagedFilesOfCpp) {
    Run("echo unformatted >text.md; echo unformatted >unstaged.cpp; echo good >old.cpp", 0);
    Run(Commit("text.md old.cpp"), 0);
    Run("git rm --quiet old.cpp", 0);
    EXPECT_EQ(Run(Commit("text.md"), 0), "");
}

}  // namespace
}  // namespace morvane_test
