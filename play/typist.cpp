#include "play/typist.h"

#include "play/answer.h"
#include "play/display.h"
#include "play/output.h"
#include "play/program.h"

#include <pty.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace play {
namespace {

/// The lines of standard input. Reads no more than the next one needs.
class InputLines {
  public:
    [[nodiscard]] bool NeedsMore() const { return !has_ended_ && !HasLine(); }
    void Read() {
        std::array<char, kChunk> chunk;
        const ssize_t count = read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "standard input");
        }
        has_ended_ = count == 0;
        text_.append(chunk.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }

    [[nodiscard]] bool HasEnded() const { return has_ended_ && text_.empty(); }
    // A chunk without a line end is longer than any answer.
    [[nodiscard]] bool HasLine() const {
        return text_.find('\n') != std::string::npos || text_.size() >= kChunk ||
               (has_ended_ && !text_.empty());
    }
    /// The keys that type the next line, and their echo.
    Answer Take() {
        ++number_;
        std::string line = text_.substr(0, text_.find('\n'));
        text_.erase(0, line.size() + 1);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        try {
            return ParseAnswer(WriteAnswer(line));
        } catch (const std::invalid_argument& error) {
            throw std::runtime_error("standard input:" + std::to_string(number_) + ": " +
                                     error.what());
        }
    }

  private:
    static constexpr std::size_t kChunk = 8192;

    std::string text_;  // read, but not yet taken
    std::size_t number_ = 0;
    bool has_ended_ = false;
};

// Whether the user's terminal already displays what is typed.
bool IsOnTerminal() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

// The default modes, but line ends are not translated.
termios Modes() {
    int ours = -1;
    int programs = -1;
    Checked(openpty(&ours, &programs, nullptr, nullptr, nullptr), "openpty");
    const Descriptor our_end(ours);
    const Descriptor programs_end(programs);
    termios modes = {};
    Checked(tcgetattr(programs, &modes), "tcgetattr");
    modes.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    if (IsOnTerminal()) {
        modes.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    }
    return modes;
}

class Typist {
  public:
    explicit Typist(const std::vector<std::string>& command)
        : program_(command, {&modes_}, signals_) {
        std::signal(SIGPIPE, SIG_IGN);  // not earlier: the program would inherit it
    }

    Ending Run() {
        while (Step()) {
        }
        return program_.HowEnded();
    }

  private:
    // Returns false at the end of the program.
    bool Step() {
        std::string output;
        const Program::Event event =
            program_.Wait(Clock::time_point::max(), output, input_.NeedsMore() ? STDIN_FILENO : -1);
        if (!WriteOutput(output, &signals_)) {
            throw std::runtime_error("cannot write to standard output");
        }
        display_.Feed(output);
        display_.TakeLines();
        if (event == Program::Event::kEnd) {
            return false;
        }
        if (event == Program::Event::kInput) {
            input_.Read();
        }
        TypeNext();
        return true;
    }

    void TypeNext() {
        if (input_.HasLine() && !display_.Prompt().empty()) {
            const Answer answer = input_.Take();
            display_.ExpectEcho(echoes_ ? std::optional(answer.echo) : std::nullopt, true);
            Type(answer.keys);
        } else if (input_.HasEnded() && !std::exchange(has_typed_end_, true)) {
            Type("\x04");
        }
    }

    void Type(std::string_view keys) {
        program_.Type(keys, Clock::now() + std::chrono::seconds(10));
    }

    const bool echoes_ = !IsOnTerminal();
    const termios modes_ = Modes();
    Signals signals_;
    Program program_;
    Display display_;
    InputLines input_;
    bool has_typed_end_ = false;
};

}  // namespace

Ending TypeInput(const std::vector<std::string>& command) {
    return Typist(command).Run();
}

}  // namespace play
