#include "support/bus_monitor.h"
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

// What the harness says about `statement`, which must fail.
std::string FailureOf(const std::function<void()>& statement) {
    testing::TestPartResultArray results;
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    try {
        statement();
    } catch (const testing::AssertionException&) {
    }
    return results.size() == 0 ? "no failure" : results.GetTestPartResult(0).message();
}

class ShellTest : public testing::Test {
  protected:
    Console& Run(const std::string& script, Wiring wiring = Wiring::kTerminal) {
        ConsoleOptions options;
        options.program = "/bin/sh";
        options.arguments = {"-c", script};
        options.wiring = wiring;
        options.directory = directory_.Path();
        return console_.emplace(options);
    }

    Console& console() { return *console_; }

  private:
    TemporaryDirectory directory_;
    std::optional<Console> console_;
};

TEST(TranscriptTest, MatchesTheNextBytesOnly) {
    Transcript transcript;
    transcript.Append("one two");
    EXPECT_EQ(transcript.ExpectNext("two", kShort), Transcript::Result::kDiffers);
    EXPECT_EQ(transcript.ExpectNext("one ", kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.ExpectNext("two", kShort), Transcript::Result::kMatched);
}

TEST(TranscriptTest, NeverMatchesConsumedBytes) {
    Transcript transcript;
    transcript.Append("prompt prompt");
    EXPECT_EQ(transcript.SkipPast("prompt", kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.SkipPast("prompt", kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.SkipPast("prompt", kShort), Transcript::Result::kTimedOut);
}

TEST(TranscriptTest, TellsTheEndFromWaiting) {
    Transcript transcript;
    transcript.Append("on");
    EXPECT_EQ(transcript.ExpectNext("one", kShort), Transcript::Result::kTimedOut);
    transcript.End();
    EXPECT_EQ(transcript.ExpectNext("one", kShort), Transcript::Result::kEnded);
}

TEST(TranscriptTest, FindsTextsInAnyOrder) {
    Transcript transcript;
    transcript.Append("b a c");
    EXPECT_EQ(transcript.SkipPastAll({"a", "b"}, kShort), Transcript::Result::kMatched);
    EXPECT_EQ(transcript.Unconsumed(), " c");
}

TEST(TranscriptTest, TellsWhichTextCameFirst) {
    Transcript transcript;
    transcript.Append("b a c");
    EXPECT_EQ(transcript.SkipPastAny({"a", "b"}, kShort), 1U);
    EXPECT_EQ(transcript.SkipPastAny({"c", "a"}, kShort), 1U);
    EXPECT_EQ(transcript.SkipPastAny({"a", "b"}, kShort), std::nullopt);
    EXPECT_EQ(transcript.Unconsumed(), " c");
}

TEST(TextFormTest, MakesEveryByteVisible) {
    EXPECT_EQ(Escaped("\x1b[0m\t\x01 \xff"), "\\e[0m\\t\\x01 \\xff");
    EXPECT_EQ(AsSeen("\x1b[1;31mred \x01\x1b[0m\r\n"), "red \n");
}

TEST_F(ShellTest, ReportsOtherOutputAtOnce) {
    Run("echo surprise; cat");
    EXPECT_NE(FailureOf([&] { console().Expect("expected"); }).find("other output came"),
              std::string::npos);
    console().Kill();
}

TEST_F(ShellTest, NamesTheLineOfTheTest) {
    Run("echo surprise; cat");
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        EXPECT_THROW(console().Expect("expected"), testing::AssertionException);
    }
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.GetTestPartResult(0).line_number(), __LINE__ - 3);
    EXPECT_STREQ(results.GetTestPartResult(0).file_name(), __FILE__);
    console().Kill();
}

TEST_F(ShellTest, TerminalHoldsNothingButTheProgramsBytes) {
    Run("read word; echo got $word");
    console().Type("this");
    console().Expect("got this\n");
    console().ExpectExit(0);
}

TEST_F(ShellTest, PersonsTerminalEchoes) {
    Run("echo ready; read word; echo got $word", Wiring::kPersonsTerminal);
    console().Expect("ready\n");
    console().Type("this");
    console().Expect("this\ngot this\n");
    console().ExpectExit(0);
    EXPECT_EQ(console().Output(), "ready\r\nthis\r\ngot this\r\n");
}

TEST_F(ShellTest, InputEndsOnTerminalAndPipe) {
    for (const Wiring wiring : {Wiring::kTerminal, Wiring::kPipes}) {
        Run("cat; echo end", wiring).CloseInput();
        console().Expect("end\n");
        console().ExpectExit(0);
    }
}

TEST_F(ShellTest, HangUpEndsTheProgram) {
    Run("echo ready; sleep 60").Expect("ready\n");
    console().HangUp();
    console().ExpectEndBySignal(SIGHUP);
}

TEST_F(ShellTest, HangUpCanBeIgnored) {
    ConsoleOptions options;
    options.program = "/bin/sh";
    options.arguments = {"-c", "echo ready; read word; echo $? > result; exit 3"};
    TemporaryDirectory directory;
    options.directory = directory.Path();
    options.ignore_hang_up = true;
    Console console(options);
    console.Expect("ready\n");
    console.HangUp();
    console.ExpectExit(3);
    EXPECT_TRUE(std::filesystem::exists(directory.File("result")));
}

TEST_F(ShellTest, ControlCInterruptsTheProgram) {
    Run("echo ready; exec sleep 60").Expect("ready\n");
    console().TypeBytes("\x03");
    console().ExpectEndBySignal(SIGINT);
}

TEST_F(ShellTest, UndeclaredErrorOutputFailsTheTest) {
    Run("echo '(x:1): GLib-CRITICAL **: assertion failed' >&2");
    EXPECT_NE(FailureOf([&] { console().Finish(); }).find("undeclared: (x:1): GLib-CRITICAL"),
              std::string::npos);
}

TEST_F(ShellTest, DeclaredErrorOutputDoesNot) {
    Run("echo one >&2; echo two 2 >&2");
    console().ExpectError("one\n");
    console().AllowStderr("^two [0-9]$");
    console().Finish();
}

TEST_F(ShellTest, UnexpectedStatusFailsTheTestEvenIfNobodyAwaitsIt) {
    Run("exit 66");
    EXPECT_NE(FailureOf([&] { console().Finish(); }).find("exit status 66; awaited: exit status 0"),
              std::string::npos);
}

TEST_F(ShellTest, OutputThatNobodyConsumedFailsTheEnd) {
    Run("echo more");
    EXPECT_NE(FailureOf([&] { console().ExpectExit(0); }).find("more\\n"), std::string::npos);
}

TEST_F(ShellTest, CpuTimeIsOnlyWhatWasUsed) {
    Run("echo ready; read word; i=0; while [ $i -lt 100000 ]; do i=$((i+1)); done");
    console().Expect("ready\n");
    const auto before = console().CpuTime();
    console().Type("go");
    console().ExpectExit(0);
    EXPECT_LT(before, console().CpuTime());
}

TEST(PrivateBusTest, IsReadyAtOnceAndGoneAtTheEnd) {
    std::string address;
    {
        const PrivateBus bus;
        address = bus.Address();
        EXPECT_NE(ConnectToBus(address), nullptr);
    }
    EXPECT_THROW(ConnectToBus(address), std::runtime_error);
}

class PrivateBusInDirectory : public testing::TestWithParam<OddDirectory> {
  protected:
    PrivateBusInDirectory() {
        std::filesystem::create_directory(directory_.File(GetParam().name));
        setenv("TMPDIR", directory_.File(GetParam().name).c_str(), 1);
    }
    ~PrivateBusInDirectory() override { setenv("TMPDIR", before_.c_str(), 1); }

  private:
    const std::string before_ = std::filesystem::temp_directory_path();
    TemporaryDirectory directory_;
};

TEST_P(PrivateBusInDirectory, TakesConnections) {
    const PrivateBus bus;
    EXPECT_NE(ConnectToBus(bus.Address()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Odd, PrivateBusInDirectory, testing::ValuesIn(kOddDirectories),
                         [](const auto& directory) { return directory.param.test; });

TEST(PrivateBusTest, CanDie) {
    PrivateBus bus;
    bus.Kill();
    EXPECT_THROW(ConnectToBus(bus.Address()), std::runtime_error);
}

TEST(BusMonitorTest, HearsCallsToTheBusItself) {
    const PrivateBus bus;
    BusMonitor monitor(bus.Address(), "AddMatch");
    const auto connection = ConnectToBus(bus.Address());
    const guint subscription = g_dbus_connection_signal_subscribe(
        connection.get(), nullptr, nullptr, nullptr, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
           gpointer) {},
        nullptr, nullptr);
    monitor.AwaitCall();
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}

}  // namespace
}  // namespace morvane_test
