#pragma once

#include <string_view>

#include "support/file_descriptor.h"
#include "support/patience.h"

namespace morvane_test {

/// How standard input and output of the program are connected.
enum class Wiring {
    kTerminal,             ///< a pseudo-terminal without echo and output processing
    kInteractiveTerminal,  ///< one with default settings: echo, and "\r\n" for "\n"
    kPipes,                ///< one pipe in, one pipe out
};

/// Both ends of the program's standard input and output. A terminal accepts lines of at most 4095
/// characters; use pipes for longer ones.
class Terminal {
  public:
    explicit Terminal(Wiring wiring);

    bool IsTerminal() const { return wiring_ != Wiring::kPipes; }
    bool IsInteractive() const { return wiring_ == Wiring::kInteractiveTerminal; }

    /// The ends for the program. Release them when it has been started.
    int ProgramInput() const { return program_input_.Number(); }
    int ProgramOutput() const;
    void ReleaseProgramEnds();

    /// Non-blocking descriptor from which the program's output is read.
    int Output() const;

    /// Returns false on an error, or if the program does not read within `limit`.
    bool Write(std::string_view bytes, Duration limit);

    /// Signals end of input: closes the pipe, or types Ctrl-D on the terminal, which is the end of
    /// input only at the start of a line (elsewhere it submits the incomplete line).
    bool CloseInput();

    /// Closes the terminal (the program gets SIGHUP) or the pipes.
    void HangUp();

    /// Pipes only: closes the reading end of the output.
    void CloseOutput() { output_.Close(); }

  private:
    void MakePipes();
    void MakeTerminal();

    Wiring wiring_;
    FileDescriptor input_;   // on a terminal also the output
    FileDescriptor output_;  // pipes only
    FileDescriptor program_input_;
    FileDescriptor program_output_;  // pipes only
};

}  // namespace morvane_test
