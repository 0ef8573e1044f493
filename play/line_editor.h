#pragma once

#include <string>

#include <termios.h>

namespace play {

/// What a terminal in canonical mode makes of typed bytes, as far as prompts need it.
class LineEditor {
  public:
    enum class Key { kText, kEnter, kEndOfInput, kInterrupt, kSuspend, kReprint };

    explicit LineEditor(const termios& modes) : modes_(modes) {}

    /// What the byte means, without taking it into the line.
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
    bool is_literal_ = false;  // behind the key that takes the next one as text
};

}  // namespace play
