#include "play/recorder.h"

#include "play/answer.h"
#include "play/display.h"
#include "play/files.h"
#include "play/line_editor.h"
#include "play/output.h"
#include "play/program.h"
#include "play/session_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <utility>

namespace play {
namespace {

/// The operator's terminal. The destructor restores its modes.
class RawTerminal {
  public:
    RawTerminal() {
        if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1) {
            throw CannotRun("--record needs a terminal");
        }
        Checked(tcgetattr(STDIN_FILENO, &modes_), "tcgetattr");
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;
    ~RawTerminal() { Restore(); }

    void MakeRaw() const {
        termios raw = modes_;
        cfmakeraw(&raw);
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
    void Restore() const { tcsetattr(STDIN_FILENO, TCSANOW, &modes_); }

    [[nodiscard]] const termios& Modes() const { return modes_; }
    [[nodiscard]] winsize Size() const {
        winsize size = {};
        ioctl(STDIN_FILENO, TIOCGWINSZ, &size);
        return size;
    }

  private:
    termios modes_ = {};
};

// The number and position of these lines differ between runs.
constexpr std::string_view kProgress = "Transferred Percent: ";

// The player's default limit leaves a margin over this.
constexpr Duration kLongestUsualWait = kDefaultLimit * 3 / 4;

class Recorder {
  public:
    explicit Recorder(const std::vector<std::string>& command)
        : editor_(terminal_.Modes()),
          signals_({SIGWINCH, SIGTSTP, SIGCONT}),
          program_(command, {&terminal_.Modes(), terminal_.Size()}, signals_) {}

    void Run() {
        terminal_.MakeRaw();
        while (Step()) {
        }
        if (!interrupts_.empty()) {
            Answer("", true);
        }
        display_.End();
        TakeLines();
        WriteWait(lines_.size());
    }

    // The lines of the session file.
    [[nodiscard]] std::vector<std::string> Lines(const std::string& command) const {
        std::vector<std::string> lines = {command};
        if (!(program_.HowEnded() == Ending{})) {
            lines.push_back("% exit " + Write(program_.HowEnded()));
        }
        if (has_progress_) {
            lines.push_back("% ignore " + std::string(kProgress) + "[..]");
        }
        lines.insert(lines.end(), lines_.begin(), lines_.end());
        return lines;
    }

  private:
    // Returns false at the end of the program.
    bool Step() {
        std::string output;
        // Stop reading keys while many wait to be forwarded.
        const int input = keys_.size() < kMostKeys ? STDIN_FILENO : -1;
        const Program::Event event = program_.Wait(Clock::time_point::max(), output, input);
        WriteOutput(output);  // fails if the terminal has hung up: SIGHUP follows
        display_.Feed(output);
        TakeLines();
        NotePrompt();
        if (event == Program::Event::kInput) {
            ReadKeys();
        } else if (event == Program::Event::kSignal) {
            HandleSignal(program_.LastSignal());
        }
        TypeKeys();
        return event != Program::Event::kEnd;
    }

    void HandleSignal(int number) {
        if (number == SIGTSTP) {
            Suspend();
        } else {
            ResizeTerminal();
        }
    }

    void ResizeTerminal() const {
        const winsize size = terminal_.Size();
        ioctl(program_.Terminal(), TIOCSWINSZ, &size);
    }

    // The kernel does not stop an orphaned process group by Ctrl-Z. Therefore this function stops
    // the program and then this process, and both continue together.
    void Suspend() {
        program_.Signal(SIGSTOP);
        terminal_.Restore();
        sigset_t stop;
        sigemptyset(&stop);
        sigaddset(&stop, SIGTSTP);
        kill(0, SIGTSTP);
        pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
        pthread_sigmask(SIG_BLOCK, &stop, nullptr);
        terminal_.MakeRaw();
        ResizeTerminal();
        program_.Signal(SIGCONT);
        waits_since_ = Clock::now();
    }

    void ReadKeys() {
        std::array<char, 4096> chunk;
        const ssize_t count = read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
            throw Interrupted(SIGHUP);
        }
        for (ssize_t i = 0; i < count; ++i) {
            TakeKey(chunk[static_cast<std::size_t>(i)]);
            TypeKeys();  // the next key may be text because of this one
        }
    }

    // Ctrl-C, Ctrl-\ and Ctrl-Z take effect immediately and discard the keys before them.
    void TakeKey(char byte) {
        const LineEditor::Key key = editor_.Classify(byte);
        if (key != LineEditor::Key::kInterrupt && key != LineEditor::Key::kSuspend) {
            keys_ += byte;
            return;
        }
        keys_.clear();
        editor_.Clear();
        if (key == LineEditor::Key::kSuspend) {
            WriteOutput("^Z");
            Suspend();
            return;
        }
        Interrupt(byte);
    }

    // A session file can contain the key only at a prompt.
    void Interrupt(char byte) {
        const std::string key = byte == '\x03' ? "^C" : "^\\";
        is_answering_ = is_answering_ || !display_.Prompt().empty();
        if (is_answering_) {
            interrupts_ += key;
        } else {
            lines_.push_back("# Without a prompt, " + key + " was typed here.");
        }
        Type(byte);
    }

    void Type(char byte) { program_.Type({&byte, 1}, Clock::now() + std::chrono::seconds(10)); }

    // Forwards keys only at a prompt, so that they are displayed after it.
    void TypeKeys() {
        while (!keys_.empty()) {
            is_answering_ = is_answering_ || !display_.Prompt().empty();
            if (!is_answering_) {
                return;
            }
            const char byte = keys_.front();
            keys_.erase(0, 1);
            const LineEditor::Key key = editor_.Classify(byte);
            if (key == LineEditor::Key::kReprint) {
                continue;  // the terminal would display the line again, without its prompt
            }
            Type(byte);
            if (key == LineEditor::Key::kEnter) {
                Answer(WriteAnswer(editor_.Line()), true);
            } else if (key == LineEditor::Key::kEndOfInput && editor_.Line().empty()) {
                Answer("^D", false);
            } else if (key == LineEditor::Key::kText) {
                editor_.Add(byte);
                display_.SetHalfTyped(editor_.Line());
            }
        }
    }

    void Answer(const std::string& written, bool ends_line) {
        answer_ = interrupts_ + written;
        interrupts_.clear();
        editor_.Clear();
        is_answering_ = false;
        has_prompt_ = false;
        waits_since_ = Clock::now();
        if (ends_line) {
            display_.ExpectEcho(std::nullopt, true);
        } else {
            display_.ExpectEcho("", false);
        }
    }

    void TakeLines() {
        const std::size_t before = lines_.size();
        for (const DisplayedLine& line : display_.TakeLines()) {
            if (!line.prompt.empty()) {
                lines_.push_back(line.prompt + answer_);
            } else if (line.text.rfind(kProgress, 0) == 0) {
                has_progress_ = true;
            } else {
                lines_.push_back(WriteGeneral(line.text));
            }
        }
        if (lines_.size() > before) {
            WriteWait(before);
        }
    }

    // A redrawn prompt is not awaited.
    void NotePrompt() {
        if (!has_prompt_ && !display_.Prompt().empty()) {
            has_prompt_ = true;
            WriteWait(lines_.size());
        }
    }

    // If this line, prompt or end came late, a player must await it for longer than by default.
    void WriteWait(std::size_t line) {
        const Clock::time_point now = Clock::now();
        const auto wait =
            std::chrono::ceil<std::chrono::seconds>(now - std::exchange(waits_since_, now));
        const std::chrono::seconds limit = std::min<std::chrono::seconds>(2 * wait, kLongestLimit);
        if (wait > kLongestUsualWait) {
            lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(line),
                          "% await " + std::to_string(limit.count()) + "s");
        }
    }

    static constexpr std::size_t kMostKeys = 65536;

    RawTerminal terminal_;
    LineEditor editor_;
    Signals signals_;
    Program program_;
    Display display_;
    std::string keys_;        // not yet typed
    std::string interrupts_;  // keys of this answer, as written
    std::string answer_;      // the last answer, as written
    bool is_answering_ = false;
    std::vector<std::string> lines_;
    bool has_progress_ = false;
    bool has_prompt_ = false;                       // since the last answer
    Clock::time_point waits_since_ = Clock::now();  // for a line, a prompt or the end
};

// The arguments of another program, such as ssh, are not those of the tool.
std::string CommandOf(const std::vector<std::string>& words) {
    const std::string& program = words.front();
    std::string command = "$ morvane";
    if (program.substr(program.rfind('/') + 1) == "morvane") {
        for (std::size_t i = 1; i < words.size(); ++i) {
            command += " " + words[i];
        }
    }
    return command;
}

}  // namespace

void Record(const std::string& file, const std::vector<std::string>& command) {
    CreateFile(file, {});
    std::optional<Recorder> recorder;
    try {
        recorder.emplace(command);
    } catch (...) {
        unlink(file.c_str());
        throw;
    }
    try {
        recorder->Run();
    } catch (...) {
        ReplaceFile(file, recorder->Lines(CommandOf(command)));
        throw;
    }
    ReplaceFile(file, recorder->Lines(CommandOf(command)));
}

}  // namespace play
