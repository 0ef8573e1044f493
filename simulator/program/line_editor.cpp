#include "simulator/program/line_editor.h"

#include "simulator/program/file_descriptor.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <histedit.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <string_view>
#include <utility>

namespace simulator {
namespace {

char kPrompt[] = "> ";  // el_set(3) takes a function that returns char*
constexpr char kTerminal[] = "/dev/tty";
constexpr int kHistoryLength = 500;
constexpr auto kOnce = static_cast<int>(SA_RESETHAND);
constexpr std::string_view kEndOfInput = "\x04";  // what el_gets(3) returns after Ctrl-D

// Their functions wait for further keys, which would block the main loop.
constexpr const char* kUnboundKeys[] = {"^V", "^[x", "^[X"};

struct EditLineDeleter {
    void operator()(EditLine* editor) const { el_end(editor); }
};
struct HistoryDeleter {
    void operator()(History* history) const { history_end(history); }
};

termios modes_at_start;  // global for the signal handler

/// In the background tcsetattr(3) would stop the process.
bool IsInForeground() {
    return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

/// Sets a signal handler unless the signal is ignored. The destructor restores the previous action.
class SignalHandler {
  public:
    SignalHandler(int signal, void (*handler)(int), int flags) : signal_(signal) {
        action_.sa_handler = handler;
        action_.sa_flags = flags | SA_RESTART;
        sigaction(signal, nullptr, &before_);
        Set();
    }
    SignalHandler(const SignalHandler&) = delete;
    SignalHandler& operator=(const SignalHandler&) = delete;
    ~SignalHandler() { sigaction(signal_, &before_, nullptr); }

    /// Call it again after SA_RESETHAND has reset the handler.
    void Set() const {
        if (before_.sa_handler != SIG_IGN) {
            sigaction(signal_, &action_, nullptr);
        }
    }

  private:
    int signal_;
    struct sigaction action_ = {};
    struct sigaction before_ = {};
};

/// Handles signals whose default action, which SA_RESETHAND has restored, ends or stops the
/// process.
void RestoreModes(int signal) {
    tcsetattr(STDIN_FILENO, TCSANOW, &modes_at_start);
    raise(signal);
}

/// Treats SIGCONT, for which g_unix_signal_add() has no source, as a resize.
void ResizeAtContinue(int /*signal*/) {
    raise(SIGWINCH);
}

/// The longest common prefix, without a truncated character.
std::string CommonBeginning(const std::vector<std::string>& words) {
    std::string common = words.front();
    for (const std::string& word : words) {
        const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(end.first, common.end());
    }
    const gchar* end = nullptr;
    g_utf8_validate(common.c_str(), static_cast<gssize>(common.size()), &end);
    return {common.c_str(), end};
}

std::string List(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : "  ") + word;
    }
    return list + "\n";
}

class TerminalEditor : public LineEditor {
  public:
    TerminalEditor(Execute execute, Complete complete);
    TerminalEditor(const TerminalEditor&) = delete;
    TerminalEditor& operator=(const TerminalEditor&) = delete;
    ~TerminalEditor() override;

    void Start() override;
    void Write(const std::string& text) override;

  private:
    // Exceptions must not propagate through C frames: noexcept terminates the process instead.
    static int ReadCharacter(EditLine* library, wchar_t* character) noexcept;

    void Configure();
    bool ReadByte(char& byte);
    bool ReadKey();
    bool TakeLine(std::string line);
    void Edit(bool edit);
    void Erase();
    void Refresh();
    void CompleteWord();
    void OnResize();

    const Execute execute_;
    const Complete complete_;
    const std::unique_ptr<History, HistoryDeleter> history_{history_init()};
    const std::unique_ptr<EditLine, EditLineDeleter> library_{
        el_init("morvane-simulator", stdin, stdout, stderr)};
    // Non-blocking, since Ctrl-C discards input that poll(2) has reported. Other processes share
    // standard input and would become non-blocking, too.
    const FileDescriptor keys_{open(kTerminal, O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    guint input_ = 0;  // GLib source IDs
    guint resize_ = 0;
    const SignalHandler quit_{SIGQUIT, RestoreModes, kOnce};
    const SignalHandler stop_{SIGTSTP, RestoreModes, kOnce};
    const SignalHandler continue_{SIGCONT, ResizeAtContinue, 0};
    bool editing_ = false;
    bool ended_ = false;
};

TerminalEditor::TerminalEditor(Execute execute, Complete complete)
    : execute_(std::move(execute)), complete_(std::move(complete)) {
    Configure();
}

TerminalEditor::~TerminalEditor() {
    for (const guint source : {input_, resize_}) {
        if (source != 0) {
            g_source_remove(source);
        }
    }
    // The library sets the terminal's modes, which would stop a process in the background.
    signal(SIGTTOU, SIG_IGN);
    if (editing_) {
        std::fputs("\n", stdout);
        Edit(false);
    }
}

void TerminalEditor::Configure() {
    HistEvent event = {};
    history(history_.get(), &event, H_SETSIZE, kHistoryLength);
    history(history_.get(), &event, H_SETUNIQUE, 1);
    EditLine* const library = library_.get();
    char* (*const prompt)(EditLine*) = [](EditLine* /*library*/) { return kPrompt; };
    el_set(library, EL_CLIENTDATA, this);
    el_set(library, EL_PROMPT, prompt);
    el_set(library, EL_EDITOR, "emacs");
    el_set(library, EL_HIST, history, history_.get());
    el_set(library, EL_GETCFN, ReadCharacter);
    for (const char* const key : kUnboundKeys) {
        el_set(library, EL_BIND, key, "ed-unassigned", nullptr);
    }
}

void TerminalEditor::Start() {
    const auto on_input = [](gint /*file*/, GIOCondition /*condition*/,
                             gpointer self) noexcept -> gboolean {
        auto& editor = *static_cast<TerminalEditor*>(self);
        if (editor.ReadKey()) {
            return G_SOURCE_CONTINUE;
        }
        editor.input_ = 0;
        return G_SOURCE_REMOVE;
    };
    const auto on_resize = [](gpointer self) noexcept -> gboolean {
        static_cast<TerminalEditor*>(self)->OnResize();
        return G_SOURCE_CONTINUE;
    };
    Edit(true);
    input_ = g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                           on_input, this);
    resize_ = g_unix_signal_add(SIGWINCH, on_resize, this);
}

/// Also runs after SIGCONT, when the shell has changed the terminal's modes.
void TerminalEditor::OnResize() {
    stop_.Set();
    el_resize(library_.get());
    if (editing_ && IsInForeground()) {
        el_set(library_.get(), EL_PREP_TERM, 0);
        el_set(library_.get(), EL_PREP_TERM, 1);
        Erase();
        Refresh();
    }
}

/// Displays a prompt, or restores the terminal's modes.
void TerminalEditor::Edit(bool edit) {
    editing_ = edit;
    el_set(library_.get(), EL_UNBUFFERED, edit ? 1 : 0);
}

/// Waits for the rest of an escape sequence, but not for long: the Escape key alone must not block
/// the main loop.
bool TerminalEditor::ReadByte(char& byte) {
    constexpr int kLongestGap = 500;  // milliseconds
    pollfd wait = {STDIN_FILENO, POLLIN, 0};
    if (poll(&wait, 1, kLongestGap) <= 0) {
        return false;
    }
    const ssize_t length = read(keys_.number(), &byte, 1);
    ended_ = length == 0 || (length < 0 && errno != EAGAIN && errno != EINTR);
    return length > 0;
}

/// Returns 1, or 0 if the library gets no character, which makes el_gets(3) return.
int TerminalEditor::ReadCharacter(EditLine* library, wchar_t* character) noexcept {
    constexpr auto kInvalid = static_cast<std::size_t>(-1);
    constexpr auto kPartial = static_cast<std::size_t>(-2);
    constexpr wchar_t kReplacement = 0xFFFD;
    void* self = nullptr;
    el_get(library, EL_CLIENTDATA, &self);
    auto& editor = *static_cast<TerminalEditor*>(self);
    std::mbstate_t state = {};
    std::size_t length = kPartial;
    while (length == kPartial) {
        char byte = '\0';
        if (!editor.ReadByte(byte)) {
            return 0;
        }
        // NOLINTNEXTLINE(concurrency-mt-unsafe): it is, with a state of the caller's
        length = std::mbrtowc(character, &byte, 1, &state);
    }
    if (length == kInvalid) {
        *character = kReplacement;
    }
    if (*character != L'\t') {
        return 1;
    }
    editor.CompleteWord();
    return 0;
}

bool TerminalEditor::ReadKey() {
    int length = 0;
    const char* const text = el_gets(library_.get(), &length);
    const std::string line(text != nullptr ? text : "",
                           text != nullptr ? static_cast<std::size_t>(length) : 0);
    if (ended_ || line == kEndOfInput) {
        Edit(false);
        std::fputs("\n", stdout);
        std::fflush(stdout);
        return false;
    }
    return line.empty() || line.back() != '\n' || TakeLine(line);
}

bool TerminalEditor::TakeLine(std::string line) {
    Edit(false);
    line.pop_back();
    if (line.find_first_not_of(' ') != std::string::npos) {
        HistEvent event = {};
        history(history_.get(), &event, H_ENTER, line.c_str());
    }
    if (!execute_(line)) {
        return false;
    }
    Edit(true);
    return true;
}

/// Erases the prompt and the line, which may take several rows.
void TerminalEditor::Erase() {
    int width = 0;
    el_get(library_.get(), EL_GETTC, "co", &width, nullptr);
    const LineInfoW* const line = el_wline(library_.get());
    const int columns =
        static_cast<int>(sizeof kPrompt) - 1 +
        wcswidth(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    std::fputs("\r", stdout);
    for (int row = width > 0 ? columns / width : 0; row > 0; --row) {
        std::fputs("\x1b[A", stdout);
    }
    std::fputs("\x1b[J", stdout);
}

void TerminalEditor::Refresh() {
    std::fflush(stdout);
    el_set(library_.get(), EL_REFRESH);
}

void TerminalEditor::Write(const std::string& text) {
    if (editing_) {
        Erase();
    }
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
    if (editing_) {
        Refresh();
    }
}

/// Inserts what all completions have in common, or lists them if that was typed already.
void TerminalEditor::CompleteWord() {
    const LineInfo* const line = el_line(library_.get());
    const std::string typed(line->buffer, line->cursor);
    const auto [from, words] = complete_(typed);
    if (words.empty()) {
        el_beep(library_.get());
        return;
    }
    std::string common = CommonBeginning(words);
    if (words.size() == 1 && common.back() != '/') {
        common += ' ';
    }
    Erase();
    const std::size_t length = typed.size() - from;
    if (common.size() > length || words.size() == 1) {
        const auto characters = g_utf8_strlen(&typed[from], static_cast<gssize>(length));
        el_deletestr(library_.get(), static_cast<int>(characters));
        el_insertstr(library_.get(), common.c_str());
    } else {
        std::fputs(List(words).c_str(), stdout);
    }
    Refresh();
}

}  // namespace

bool CanEditLines() {
    const gchar* const terminal = g_getenv("TERM");
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && IsInForeground() &&
           access(kTerminal, R_OK) == 0 && terminal != nullptr &&
           std::string_view(terminal) != "dumb" &&
           // The library decodes and measures characters in the encoding of the locale.
           // NOLINTNEXTLINE(concurrency-mt-unsafe): the caller has no other threads yet
           std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr &&
           tcgetattr(STDIN_FILENO, &modes_at_start) == 0;
}

std::unique_ptr<LineEditor> MakeLineEditor(LineEditor::Execute execute,
                                           LineEditor::Complete complete) {
    return std::make_unique<TerminalEditor>(std::move(execute), std::move(complete));
}

}  // namespace simulator
