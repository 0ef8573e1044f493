#pragma once

#include "play/session_file.h"

#include <string>
#include <vector>

namespace play {

/// For lines that may come in any order: which line each pattern matches, so that as many as can be
/// have one of their own; kNoLine for the others.
inline constexpr std::size_t kNoLine = static_cast<std::size_t>(-1);
std::vector<std::size_t> AssignLines(const std::vector<PatternLine>& patterns,
                                     const std::string* lines, std::size_t count);

/// Compares lines with the output of a step, one at a time. The elements must outlive it.
class Matcher {
  public:
    explicit Matcher(const std::vector<Element>& elements);

    void Add(const std::string& line);

    /// Whether more lines can still make a match.
    [[nodiscard]] bool IsViable() const { return !states_.empty(); }
    /// Whether no more lines are needed.
    [[nodiscard]] bool IsComplete() const { return IsViable() && awaited_ == elements_->size(); }
    /// The element that is awaited, or that did not match; the number of elements if none is.
    [[nodiscard]] std::size_t Awaited() const { return awaited_; }
    [[nodiscard]] const std::vector<std::string>& Lines() const { return lines_; }

  private:
    /// A way to match all lines so far. `group` is the line with which an element in any order
    /// began.
    struct State {
        std::size_t element;
        std::size_t group;
    };

    void SetStates(std::vector<State> states);
    void Enter(std::vector<State>& states, std::size_t element) const;
    void Advance(const State& state, std::vector<State>& next) const;

    const std::vector<Element>* elements_;
    std::vector<std::string> lines_;
    std::vector<State> states_;
    std::size_t awaited_ = 0;
};

}  // namespace play
