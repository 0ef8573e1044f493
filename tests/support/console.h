#pragma once

#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/child_process.h"
#include "support/here.h"
#include "support/patience.h"
#include "support/terminal.h"
#include "support/transcript.h"

namespace morvane_test {

struct ConsoleOptions {
    std::vector<std::string> arguments;
    Wiring wiring = Wiring::kTerminal;
    std::string bus_address;               ///< DBUS_SYSTEM_BUS_ADDRESS of the tool
    std::string directory;                 ///< working directory
    std::vector<std::string> environment;  ///< additional variables, as "NAME=value"
    std::vector<std::string> prefix;       ///< command before the program, such as {"nohup"}
    std::string program;                   ///< empty: the tool
    bool ignore_hang_up = false;           ///< ignore SIGHUP, as nohup(1) does
    Duration reading_pause{0};             ///< interval between reads, see Pump
};

/// Default options with one member set.
ConsoleOptions Wired(Wiring wiring);
ConsoleOptions WithArguments(std::vector<std::string> arguments);
ConsoleOptions UnderNohup();

/// The non-empty lines of `errors` that match none of `patterns` (ECMAScript).
std::vector<std::string> UndeclaredErrors(const std::string& errors,
                                          const std::vector<std::string>& patterns);

/// One run of the tool, with its standard streams connected to the test.
///
/// The environment contains LC_ALL=C, PATH, TERM, the bus address, and the variables that
/// sanitizers, coverage and emulators need. The command in `Launcher()` precedes the tool's path.
///
/// Functions that wait have a time-out of `Patience()`, or that of `SetPatience`. When it expires
/// they report a failure and leave the test body with an exception.
class Console {
  public:
    enum class Rest { kNone, kIgnored };  ///< what to do with unconsumed output

    explicit Console(const ConsoleOptions& options);

    /// Types a line and a newline. It may be typed before the tool asks for it.
    void Type(std::string_view line, Here here = Here::Now());
    /// Types exactly these bytes.
    void TypeBytes(std::string_view bytes, Here here = Here::Now());

    // On an interactive terminal "\n" in expected bytes matches the terminal's "\r\n".

    /// Waits until exactly these bytes are the next output and consumes them. Fails as soon as
    /// other bytes arrive.
    void Expect(std::string_view bytes, Here here = Here::Now());
    /// Waits until these bytes occur in the unconsumed output and consumes it up to their end.
    void Await(std::string_view bytes, Here here = Here::Now());
    /// Waits for all these texts in any order and consumes the output up to the end of the last
    /// one: for messages of both of the tool's threads.
    void AwaitAll(const std::vector<std::string>& texts, Here here = Here::Now());

    // The next functions report failure by their result and do not fail the test.
    bool TryWrite(std::string_view bytes, Duration limit) { return terminal_.Write(bytes, limit); }
    /// See `Transcript`.
    std::optional<std::size_t> SkipPastAny(const std::vector<std::string>& texts, Duration limit) {
        return output_.SkipPastAny(texts, limit);
    }
    /// Returns nullopt if the tool is still running after `limit`.
    std::optional<Ending> AwaitEnd(Duration limit);
    /// Waits until all output of a tool that has ended has been read.
    void AwaitEndOfOutput();

    /// Waits for the process to exit with this status, or by this signal. Unconsumed output is a
    /// failure unless `rest` is kIgnored.
    void ExpectExit(int status, Rest rest = Rest::kNone, Here here = Here::Now());
    void ExpectEndBySignal(int number, Rest rest = Rest::kIgnored, Here here = Here::Now());

    /// Waits for this text on standard error and declares it as expected.
    void ExpectError(std::string_view text, Here here = Here::Now());
    /// Allows lines on standard error that match this pattern.
    void AllowStderr(const std::string& pattern) { declared_errors_.push_back(pattern); }

    /// Sends SIGINT to the tool only. `TypeBytes("\x03")` sends Ctrl-C through the terminal.
    void Interrupt() { Signal(SIGINT); }
    void Signal(int number) { process_.Signal(number); }

    /// See `Terminal`.
    void CloseInput(Here here = Here::Now());
    void HangUp();
    void CloseOutput();

    void SetPatience(Duration patience) { patience_ = patience; }
    std::chrono::microseconds CpuTime() { return process_.CpuTime(); }
    bool HasEnded() { return process_.AwaitEnd(Duration(0)).has_value(); }
    pid_t ProcessId() const { return process_.Id(); }

    std::string Output() const { return output_.All(); }
    std::string Consumed() const { return output_.Consumed(); }
    std::string Unconsumed() const { return output_.Unconsumed(); }
    std::string Errors() const { return errors_.All(); }

    /// Called at the end of a test. Closes the input of a tool that is still running and expects
    /// exit status 0; fails the test on undeclared lines on standard error. Does not throw.
    void Finish();
    /// For a tool that cannot exit, such as one in a call that never returns.
    void Kill();

    /// Command line, output and standard error of the run, for failure reports.
    std::string FailureReport();

  private:
    void ExpectCleanExit();
    std::string OnTerminal(std::string_view bytes) const;
    void ExpectMatched(Transcript::Result result, const Transcript& transcript,
                       const std::string& awaited, Here here) const;
    void ExpectEnding(const Ending& expected, Rest rest, Here here);

    std::vector<std::string> command_;
    Terminal terminal_;
    Pipe error_pipe_;
    ChildProcess process_;
    Transcript output_;
    Transcript errors_;
    // QEMU prints this line when a signal terminates the tool.
    std::vector<std::string> declared_errors_ = {"^qemu: uncaught target signal"};
    Duration patience_ = Patience();
    bool end_was_awaited_ = false;
    Pump output_pump_;
    Pump error_pump_;
};

}  // namespace morvane_test
