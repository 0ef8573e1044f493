#pragma once

#include "play/session_file.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace play {

inline constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// Which of the patterns match a line.
std::vector<std::size_t> FindPatterns(const std::vector<PatternLine>& patterns,
                                      const std::string& line);

/// For lines in any order: a maximum bipartite matching of lines and patterns.
class Assignment {
  public:
    explicit Assignment(std::size_t patterns) : line_of_(patterns, kNone) {}

    /// Adds a line that each of these patterns matches. Returns whether `Matched` has increased.
    bool Add(std::vector<std::size_t> patterns);
    /// Number of lines that have been assigned a pattern.
    [[nodiscard]] std::size_t Matched() const { return matched_; }
    /// The line of a pattern, counted from the first added, or kNone.
    [[nodiscard]] std::size_t LineOf(std::size_t pattern) const { return line_of_[pattern]; }
    /// The pattern of a line, or kNone.
    [[nodiscard]] std::size_t PatternOf(std::size_t line) const { return pattern_of_[line]; }

  private:
    void Augment(std::size_t pattern, const std::vector<std::size_t>& reached_from);

    std::vector<std::size_t> line_of_;
    std::vector<std::size_t> pattern_of_;
    std::vector<std::vector<std::size_t>> patterns_of_;  // the patterns that match each line
    std::size_t matched_ = 0;
};

/// Compares lines with the output of a step, one at a time. The elements must outlive it.
class Matcher {
  public:
    explicit Matcher(const std::vector<Element>& elements);

    void Add(const std::string& line);

    /// Whether a match is still possible.
    [[nodiscard]] bool IsViable() const { return !states_.empty(); }
    /// Whether no more lines are needed.
    [[nodiscard]] bool IsComplete() const { return IsViable() && awaited_ == elements_->size(); }
    /// The element that is awaited, or that did not match; the number of elements if none is.
    [[nodiscard]] std::size_t Awaited() const { return awaited_; }
    /// The line in the file of the first pattern that is awaited; Awaited() must be an element.
    [[nodiscard]] std::size_t AwaitedLine() const;
    [[nodiscard]] const std::vector<std::string>& Lines() const { return lines_; }

  private:
    /// A way to match all lines so far. `group` is set inside an element of kind kAnyOrder.
    struct State {
        std::size_t element;
        std::optional<Assignment> group;
    };

    void SetStates(std::vector<State> states);
    void Enter(std::vector<State>& states, std::size_t element);
    void Advance(State& state, std::vector<State>& next);

    const std::vector<Element>* elements_;
    std::vector<bool> entered_;  // one for each element
    std::vector<std::string> lines_;
    std::vector<State> states_;
    std::size_t awaited_ = 0;
};

}  // namespace play
