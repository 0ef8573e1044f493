#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace play {

/// A line of a session file.
struct DisplayedLine {
    std::string text;    ///< without the prompt
    std::string prompt;  ///< the prompt at which `text` was typed; empty for output
};

/// What a terminal displays, line by line, without colours and without prompts that were redrawn
/// beneath a notification.
class Display {
  public:
    void Feed(std::string_view bytes);

    /// The lines finished since the last call.
    std::vector<DisplayedLine> TakeLines();
    /// The prompt at which the program waits, as it was first drawn. Empty if there is none, or if
    /// the echo of its answer has not been displayed yet.
    [[nodiscard]] std::string Prompt() const;
    /// The last line, which is not finished.
    [[nodiscard]] const std::string& Unfinished() const { return line_; }
    /// Whether that is an answer, or its beginning, behind its prompt.
    [[nodiscard]] bool IsAnswerUnfinished() const;

    /// Call it after typing an answer. `echo` is what the terminal displays for it, or nothing if
    /// that is unknown. `ends_line` is false for keys that act without Enter.
    void ExpectEcho(std::optional<std::string> echo, bool ends_line);
    /// The unfinished answer. A notification leaves it on a line of its own.
    void SetHalfTyped(std::string text) { half_typed_ = std::move(text); }
    /// Call it when the program's output has ended.
    void End();

  private:
    enum class State { kText, kEscape, kSequence };

    void FeedByte(char byte);
    void FeedText(char byte);
    void MoveLeft();
    void Put(char byte);
    void EndSequence(char final);
    void FinishLine();
    void FinishPrompt(std::string_view line, std::size_t length);
    void SeparatePrompt();

    State state_ = State::kText;
    std::string line_;        // the unfinished line
    std::size_t column_ = 0;  // in bytes
    std::vector<DisplayedLine> lines_;
    bool is_answered_ = false;
    std::optional<std::string> echo_;
    std::string first_drawn_;
    std::string half_typed_;
};

}  // namespace play
