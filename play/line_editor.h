#pragma once

#include <string>

#include <termios.h>

namespace play {

/// Models how a terminal in canonical mode edits a line. Covers only what prompts need.
class LineEditor {
  public:
    enum class Key { kText, kEnter, kEndOfInput, kInterrupt, kSuspend, kReprint };

    explicit LineEditor(const termios& modes) : modes_(modes) {}

    /// What the byte would do; the line does not change.
    [[nodiscard]] Key Classify(char byte) const;
    void Add(char byte);
    [[nodiscard]] const std::string& Line() const { return line_; }
    void Clear() { line_.clear(); }

  private:
    [[nodiscard]] bool Is(char byte, int which) const;
    [[nodiscard]] bool IsFlowControl(char byte) const;
    void EraseCharacter();
    void EraseWord();

    termios modes_;
    std::string line_;
    bool is_literal_ = false;  // the previous key makes this one text
};

}  // namespace play
