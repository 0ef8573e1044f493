#include "support/console.h"
#include "support/odd_directories.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"
#include "support/text_form.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace morvane_test {
namespace {

constexpr Duration kShort(50);

// Runs `statement` and returns the failure that it reports.
testing::TestPartResult FailureOf(const std::function<void()>& statement) {
    testing::TestPartResultArray results;
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    try {
        statement();
    } catch (const testing::AssertionException&) {
    }
    if (results.size() == 0) throw std::runtime_error("no failure");
    return results.GetTestPartResult(0);
}

class ShellTest : public testing::Test {
  protected:
    Console& Run(const std::string& script, ConsoleOptions options = {}) {
        options.program = "/bin/sh";
        options.arguments = {"-c", script};
        options.directory = directory_.Path();
        return console_.emplace(options);
    }

    Console& console() { return *console_; }

    const TemporaryDirectory directory_;

  private:
    std::optional<Console> console_;
};

TEST(TranscriptTest, MatchesBytesOnceAndDistinguishesEndFromTimeOut) {
    Transcript transcript;
    transcript.Append("one two");
    EXPECT_EQ(transcript.ExpectNext("two", kShort), Transcript::Result::kDiffers);
    EXPECT_EQ(transcript.ExpectNext("one ", kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.SkipPast("one", kShort), Transcript::Result::kTimedOut);
    EXPECT_EQ(transcript.ExpectNext("two and", kShort), Transcript::Result::kTimedOut);
    EXPECT_EQ(transcript.ExpectNext("two", kShort), Transcript::Result::kMatched);
    transcript.End();
    EXPECT_EQ(transcript.ExpectNext("one", kShort), Transcript::Result::kEnded);
}

TEST(TranscriptTest, SkipsPastAllTextsOrTheFirstOne) {
    Transcript transcript;
    transcript.Append("b a c b a c");
    EXPECT_EQ(transcript.SkipPastAll({"a", "b"}, kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.Unconsumed(), " c b a c");
    EXPECT_EQ(transcript.SkipPastAny({"a", "b"}, kShort), 1U);
    EXPECT_EQ(transcript.SkipPastAny({"c", "a"}, kShort), 1U);
    EXPECT_EQ(transcript.SkipPastAny({"a", "b"}, kShort), std::nullopt);
    EXPECT_EQ(transcript.Unconsumed(), " c");
}

TEST(TextFormTest, EscapesControlAndInvalidBytes) {
    EXPECT_EQ(Escaped("\x1b[0m\t\x01 \xff"), "\\e[0m\\t\\x01 \\xff");
    EXPECT_EQ(AsSeen("\x1b[1;31mred \x01\x1b[0m\r\n"), "red \n");
    EXPECT_EQ(AsSeen("above\nerased \r\x1b[Kwritten"), "above\nwritten");
}

TEST_F(ShellTest, ReportsUnexpectedOutputAtTheLineOfTheTest) {
    Run("echo surprise; cat");
    const auto failure = FailureOf([&] { console().Expect("expected"); });
    EXPECT_EQ(failure.line_number(), __LINE__ - 1);
    EXPECT_STREQ(failure.file_name(), __FILE__);
    EXPECT_NE(std::string(failure.message()).find("unexpected output"), std::string::npos);
    console().Kill();
}

TEST_F(ShellTest, ReportsUndeclaredErrorsExitStatusAndUnconsumedOutput) {
    const auto finish = [this] { console().Finish(); };
    const auto expect_exit = [this] { console().ExpectExit(0); };
    struct Row {
        const char* script;
        std::function<void()> end;
        const char* failure;
    };
    const Row rows[] = {
        {"echo '(x:1): GLib-CRITICAL **: a' >&2", finish,
         "undeclared line on stderr: (x:1): GLib-CRITICAL"},
        {"exit 66", finish, "exit status 66; expected: exit status 0"},
        {"echo more", expect_exit, "more\\n"},
    };
    for (const Row& row : rows) {
        Run(row.script);
        const std::string failure = FailureOf(row.end).message();
        EXPECT_NE(failure.find(row.failure), std::string::npos) << failure;
    }
    Run("echo '(one)' >&2; echo two 2 >&2");
    console().ExpectError("(one)\n");
    console().AllowStderr("^two [0-9]$");
    console().Finish();
}

TEST_F(ShellTest, CpuTimeGrowsWithWork) {
    Run("echo ready; read word; i=0; while [ $i -lt 100000 ]; do i=$((i+1)); done");
    console().Expect("ready\n");
    const auto before = console().CpuTime();
    console().Type("go");
    console().ExpectExit(0);
    EXPECT_LT(before, console().CpuTime());
}

TEST(PrivateBusTest, AcceptsConnectionsInAnyTemporaryDirectory) {
    const TemporaryDirectory directory;
    for (const OddDirectory& odd : kOddDirectories) {
        SCOPED_TRACE(odd.name);
        std::filesystem::create_directory(directory.File(odd.name));
        setenv("TMPDIR", directory.File(odd.name).c_str(), 1);
        const PrivateBus bus;
        EXPECT_NE(ConnectToBus(bus.Address()), nullptr);
    }
    unsetenv("TMPDIR");
}

}  // namespace
}  // namespace morvane_test
