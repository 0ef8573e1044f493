#pragma once

#include <string_view>

#include "support/file_descriptor.h"
#include "support/patience.h"

namespace morvane_test {

/// How the program's standard input and output are connected to the test.
enum class Wiring {
    kTerminal,         ///< a pseudo-terminal without echo, on which "\n" stays "\n"
    kPersonsTerminal,  ///< a pseudo-terminal as a person's: input is echoed, "\n" becomes "\r\n"
    kPipes,            ///< one pipe in, one pipe out
};

/// The test's end and the program's end of standard input and output. Terminals take lines of at
/// most 4095 characters; longer ones need pipes.
class Terminal {
  public:
    explicit Terminal(Wiring wiring);

    bool IsTerminal() const { return wiring_ != Wiring::kPipes; }
    bool IsPersons() const { return wiring_ == Wiring::kPersonsTerminal; }

    /// The program's ends. The test lets go of them once the program has its own copies.
    int ProgramInput() const { return program_input_.Number(); }
    int ProgramOutput() const;
    void ReleaseProgramEnds();

    /// Where the program's output is read, without blocking.
    int Output() const;

    /// Returns false if the program takes no input any more, or none within `limit`.
    bool Write(std::string_view bytes, Duration limit);

    /// End of input: closes the pipe, or types Ctrl-D on a terminal, which means the end only at
    /// the start of a line (elsewhere it hands over the line as it stands).
    bool CloseInput();

    /// The terminal is gone, as when its window is closed; pipes are closed.
    void HangUp();

    /// Pipes only: nobody reads any more what the program writes.
    void CloseOutput() { output_.Close(); }

  private:
    void MakePipes();
    void MakeTerminal();

    Wiring wiring_;
    FileDescriptor input_;   // for a terminal the one test's end, which serves output too
    FileDescriptor output_;  // pipes only
    FileDescriptor program_input_;
    FileDescriptor program_output_;  // pipes only
};

}  // namespace morvane_test
