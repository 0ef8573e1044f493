#include "support/console.h"

#include "support/programs.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

namespace morvane_test {
namespace {

constexpr std::array kPassedOn = {
    "PATH",         "ASAN_OPTIONS",      "LSAN_OPTIONS",      "UBSAN_OPTIONS",   "TSAN_OPTIONS",
    "GCOV_PREFIX",  "GCOV_PREFIX_STRIP", "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH", "QEMU_LD_PREFIX",
    "QEMU_SET_ENV", "QEMU_CPU"};

// G_SLICE: sanitizers and valgrind do not see leaks in slices of GLib's own allocator.
std::vector<std::string> Environment(const ConsoleOptions& options) {
    std::vector<std::string> environment = {"LC_ALL=C",
                                            "TERM=xterm",
                                            "G_SLICE=always-malloc",
                                            "HOME=" + options.directory,
                                            "XDG_RUNTIME_DIR=" + options.directory,
                                            "DBUS_SYSTEM_BUS_ADDRESS=" + options.bus_address};
    for (const char* const name : kPassedOn)
        if (const char* const value = std::getenv(name))
            environment.push_back(std::string(name) + "=" + value);
    environment.insert(environment.end(), options.environment.begin(), options.environment.end());
    return environment;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> CommandLine(const ConsoleOptions& options) {
    std::vector<std::string> command = options.prefix;
    std::istringstream launcher(options.program.empty() ? Launcher() : "");
    command.insert(command.end(), std::istream_iterator<std::string>(launcher), {});
    command.push_back(options.program.empty() ? ToolPath() : options.program);
    command.insert(command.end(), options.arguments.begin(), options.arguments.end());
    return command;
}

ChildSetup Setup(const std::vector<std::string>& command, const ConsoleOptions& options,
                 const Terminal& terminal, const Pipe& errors) {
    return {command,
            Environment(options),
            options.directory,
            terminal.ProgramInput(),
            terminal.ProgramOutput(),
            errors.writer.Number(),
            terminal.IsTerminal(),
            options.ignore_hang_up};
}

// Indexed by Transcript::Result.
constexpr std::array kOutcomes = {"found", "unexpected output", "end of output", "time-out"};

}  // namespace

std::vector<std::string> UndeclaredErrors(const std::string& errors,
                                          const std::vector<std::string>& patterns) {
    std::vector<std::string> lines = SplitLines(errors);
    const auto is_declared = [&](const std::string& line) {
        return line.empty() ||
               std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
                   return std::regex_search(line, std::regex(pattern));
               });
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), is_declared), lines.end());
    return lines;
}

ConsoleOptions Wired(Wiring wiring) {
    ConsoleOptions options;
    options.wiring = wiring;
    return options;
}

ConsoleOptions WithArguments(std::vector<std::string> arguments) {
    ConsoleOptions options;
    options.arguments = std::move(arguments);
    return options;
}

ConsoleOptions UnderNohup() {
    ConsoleOptions options;
    options.ignore_hang_up = true;
    return options;
}

Console::Console(const ConsoleOptions& options)
    : command_(CommandLine(options)),
      terminal_(options.wiring),
      error_pipe_(MakePipe()),
      process_(Setup(command_, options, terminal_, error_pipe_)),
      output_pump_(terminal_.Output(), output_, options.reading_pause),
      error_pump_(error_pipe_.reader.Number(), errors_) {
    terminal_.ReleaseProgramEnds();
    error_pipe_.writer.Close();
}

void Console::ExpectMatched(Transcript::Result result, const Transcript& transcript,
                            const std::string& awaited, Here here) const {
    if (result == Transcript::Result::kMatched) return;
    const char* const outcome = kOutcomes.at(static_cast<std::size_t>(result));
    FailTest(here, std::string(outcome) + ".\nExpected:\n" + awaited + "\nNot yet consumed:\n" +
                       Escaped(transcript.Unconsumed()) + "\n");
}

void Console::Type(std::string_view line, Here here) {
    TypeBytes(std::string(line) + "\n", here);
}

void Console::TypeBytes(std::string_view bytes, Here here) {
    if (!terminal_.Write(bytes, patience_)) FailTest(here, "the tool does not read its input");
}

std::string Console::OnTerminal(std::string_view bytes) const {
    std::string output;
    for (const char byte : bytes) {
        if (byte == '\n' && terminal_.IsInteractive()) output += '\r';
        output += byte;
    }
    return output;
}

void Console::Expect(std::string_view bytes, Here here) {
    const std::string expected = OnTerminal(bytes);
    ExpectMatched(output_.ExpectNext(expected, patience_), output_, Escaped(expected), here);
}

void Console::Await(std::string_view bytes, Here here) {
    const std::string expected = OnTerminal(bytes);
    ExpectMatched(output_.SkipPast(expected, patience_), output_, Escaped(expected), here);
}

void Console::AwaitAll(const std::vector<std::string>& texts, Here here) {
    std::vector<std::string> expected;
    std::string description;
    for (const std::string& text : texts) {
        expected.push_back(OnTerminal(text));
        description += "- " + Escaped(expected.back()) + "\n";
    }
    ExpectMatched(output_.SkipPastAll(expected, patience_), output_, description, here);
}

std::optional<Ending> Console::AwaitEnd(Duration limit) {
    const auto ending = process_.AwaitEnd(limit);
    if (ending) end_was_awaited_ = true;
    return ending;
}

void Console::AwaitEndOfOutput() {
    output_.AwaitEnd(patience_);
    errors_.AwaitEnd(patience_);
}

void Console::ExpectExit(int status, Rest rest, Here here) {
    ExpectEnding({status, std::nullopt}, rest, here);
}

void Console::ExpectEndBySignal(int number, Rest rest, Here here) {
    ExpectEnding({std::nullopt, number}, rest, here);
}

void Console::ExpectEnding(const Ending& expected, Rest rest, Here here) {
    end_was_awaited_ = true;
    const auto ending = process_.AwaitEnd(patience_);
    if (!ending) FailTest(here, "the tool is still running; expected: " + expected.Describe());
    if (ending->Describe() != expected.Describe())
        FailTest(here, ending->Describe() + "; expected: " + expected.Describe());
    ExpectMatched(output_.AwaitEnd(patience_), output_, "the end of the output", here);
    if (rest == Rest::kNone && !output_.Unconsumed().empty())
        ExpectMatched(Transcript::Result::kDiffers, output_, "no output", here);
}

void Console::ExpectError(std::string_view text, Here here) {
    for (const std::string& line : SplitLines(std::string(text)))
        AllowStderr(morvane::TextPtr(g_regex_escape_string(line.c_str(), -1)).get());
    ExpectMatched(errors_.SkipPast(text, patience_), errors_, "on stderr: " + Escaped(text), here);
}

void Console::CloseInput(Here here) {
    if (!terminal_.CloseInput()) FailTest(here, "the tool does not read its input");
}

void Console::HangUp() {
    output_pump_.Stop();
    terminal_.HangUp();
}

void Console::CloseOutput() {
    output_pump_.Stop();
    terminal_.CloseOutput();
}

void Console::Kill() {
    end_was_awaited_ = true;
    Signal(SIGKILL);
    process_.AwaitEnd(patience_);
}

void Console::ExpectCleanExit() {
    const testing::ScopedTrace trace(__FILE__, __LINE__,
                                     "after the test body: closing the tool's input");
    if (!HasEnded()) terminal_.CloseInput();
    ExpectExit(0, Rest::kIgnored);
}

void Console::Finish() try {
    if (testing::Test::HasFailure()) Kill();
    if (!end_was_awaited_) ExpectCleanExit();
    errors_.AwaitEnd(patience_);
    for (const std::string& line : UndeclaredErrors(Errors(), declared_errors_))
        ADD_FAILURE() << "undeclared line on stderr: " << line;
} catch (const testing::AssertionException&) {
    Kill();  // the failure has been reported
}

std::string Console::FailureReport() {
    std::ostringstream report;
    report << "Command line:";
    for (const std::string& word : command_) report << ' ' << word;
    const auto ending = process_.AwaitEnd(Duration(0));
    report << "\n(" << (ending ? ending->Describe() : "still running") << ")\n"
           << "---- Output\n"
           << Escaped(Output()) << "\n---- Output as displayed\n"
           << AsSeen(Output()) << "\n---- Not consumed\n"
           << Escaped(Unconsumed()) << "\n---- Standard error\n"
           << Errors() << "\n";
    return report.str();
}

}  // namespace morvane_test
