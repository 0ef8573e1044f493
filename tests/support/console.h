#pragma once

#include <csignal>
#include <functional>
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
    std::string bus_address;               ///< what the tool takes for the system bus
    std::string directory;                 ///< working directory
    std::vector<std::string> environment;  ///< more of it, as "NAME=value"
    std::vector<std::string> prefix;       ///< words before the program, such as {"nohup"}
    std::string program;                   ///< the tool, if empty
    bool ignore_hang_up = false;           ///< as under nohup(1)
    Duration reading_pause{0};             ///< how long output may wait to be read, see Pump
};

/// Options with nothing but this.
ConsoleOptions Wired(Wiring wiring);
ConsoleOptions WithArguments(std::vector<std::string> arguments);
ConsoleOptions UnderNohup();

/// The lines of a program's standard error in which none of `patterns` (ECMAScript) is found.
std::vector<std::string> UndeclaredErrors(const std::string& errors,
                                          const std::vector<std::string>& patterns);

/// One run of the tool and its operator.
///
/// The environment is bare: LC_ALL=C, PATH, TERM, the bus, and what sanitizers, coverage and
/// emulators need. The words of `Launcher()` go before the tool's path.
///
/// Everything that awaits does so for `Patience()` unless `SetPatience` was called, and leaves the
/// test body with a failure if it waited in vain.
class Console {
  public:
    enum class Rest { kNone, kIgnored };  ///< output that nobody has consumed

    explicit Console(const ConsoleOptions& options);

    /// Types a line, with its newline. It may be typed before the tool asks for it.
    void Type(std::string_view line, Here here = Here::Now());
    /// Types exactly these bytes.
    void TypeBytes(std::string_view bytes, Here here = Here::Now());

    // On a person's terminal "\n" stands for the line end as it comes there, "\r\n".

    /// Awaits exactly these bytes as the next output and consumes them. Other bytes are a failure
    /// as soon as they come.
    void Expect(std::string_view bytes, Here here = Here::Now());
    /// Awaits these bytes anywhere in the output not yet consumed and consumes up to their end.
    void Await(std::string_view bytes, Here here = Here::Now());
    /// Awaits all these texts, in any order, and consumes up to the end of the last: for messages
    /// of both of the tool's threads.
    void AwaitAll(const std::vector<std::string>& texts, Here here = Here::Now());
    /// Awaits that `accepts` says yes to all output that nobody has consumed, and consumes it.
    /// Returns false, and consumes nothing, if it never does.
    bool TakeOutputIf(const std::function<bool(std::string_view)>& accepts);

    // The same for whoever goes on in any case: these tell whether it worked, and fail no test.
    bool Offer(std::string_view bytes, Duration limit) { return terminal_.Write(bytes, limit); }
    /// See `Transcript`.
    std::optional<std::size_t> SkipPastAny(const std::vector<std::string>& texts, Duration limit) {
        return output_.SkipPastAny(texts, limit);
    }
    /// Nothing if the tool goes on for so long.
    std::optional<Ending> AwaitEnd(Duration limit);
    /// For when the tool has ended: what it wrote last may still be on its way.
    void AwaitEndOfOutput();

    /// Awaits the end of the process with this exit status, or by this signal. Output that nobody
    /// has consumed is a failure unless `rest` says otherwise.
    void ExpectExit(int status, Rest rest = Rest::kNone, Here here = Here::Now());
    void ExpectEndBySignal(int number, Rest rest = Rest::kIgnored, Here here = Here::Now());

    /// Awaits this text on standard error and declares it as expected there.
    void ExpectError(std::string_view text, Here here = Here::Now());
    /// Declares that lines with this pattern may appear on standard error.
    void AllowStderr(const std::string& pattern) { declared_errors_.push_back(pattern); }

    /// SIGINT to the tool and nobody else. `TypeBytes("\x03")` is what a person does.
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

    /// At the end of a test: a tool whose end nobody has awaited gets its end of input and must
    /// end with 0, and standard error must hold nothing undeclared. Does not leave the test.
    void Finish();
    /// For a tool that cannot end by itself, such as one in a call that hangs for ever.
    void Kill();

    /// All that helps to understand a failure.
    std::string Story();

  private:
    void ExpectTidyEnd();
    std::string OnTerminal(std::string_view bytes) const;
    void Judge(Transcript::Result result, const Transcript& transcript, const std::string& awaited,
               Here here) const;
    void ExpectEnding(const Ending& expected, Rest rest, Here here);

    std::vector<std::string> command_;
    Terminal terminal_;
    Pipe error_pipe_;
    ChildProcess process_;
    Transcript output_;
    Transcript errors_;
    // An emulator reports the end of the tool by a signal under its own name.
    std::vector<std::string> declared_errors_ = {"^qemu: uncaught target signal"};
    Duration patience_ = Patience();
    bool end_is_accounted_for_ = false;
    Pump output_pump_;
    Pump error_pump_;
};

}  // namespace morvane_test
