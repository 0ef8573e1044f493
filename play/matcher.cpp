#include "play/matcher.h"

#include <algorithm>
#include <utility>

namespace play {
namespace {

/// Augmenting paths of a bipartite graph.
class Assignment {
  public:
    Assignment(const std::vector<PatternLine>& patterns, const std::string* lines,
               std::size_t count)
        : patterns_(patterns), lines_(lines), pattern_of_(count, kNoLine) {}

    bool Assign(std::size_t pattern) {
        visited_.assign(pattern_of_.size(), false);
        return Search(pattern);
    }

    [[nodiscard]] const std::vector<std::size_t>& PatternOfEachLine() const { return pattern_of_; }

  private:
    // NOLINTNEXTLINE(misc-no-recursion): at most as deep as there are lines in any order
    bool Search(std::size_t pattern) {
        for (std::size_t line = 0; line < pattern_of_.size(); ++line) {
            if (visited_[line] || !patterns_[pattern].pattern.Matches(lines_[line])) {
                continue;
            }
            visited_[line] = true;
            if (pattern_of_[line] == kNoLine || Search(pattern_of_[line])) {
                pattern_of_[line] = pattern;
                return true;
            }
        }
        return false;
    }

    const std::vector<PatternLine>& patterns_;
    const std::string* lines_;
    std::vector<std::size_t> pattern_of_;
    std::vector<bool> visited_;
};

}  // namespace

std::vector<std::size_t> AssignLines(const std::vector<PatternLine>& patterns,
                                     const std::string* lines, std::size_t count) {
    Assignment assignment(patterns, lines, count);
    for (std::size_t pattern = 0; pattern < patterns.size(); ++pattern) {
        assignment.Assign(pattern);
    }
    std::vector<std::size_t> line_of(patterns.size(), kNoLine);
    for (std::size_t line = 0; line < count; ++line) {
        const std::size_t pattern = assignment.PatternOfEachLine()[line];
        if (pattern != kNoLine) {
            line_of[pattern] = line;
        }
    }
    return line_of;
}

Matcher::Matcher(const std::vector<Element>& elements) : elements_(&elements) {
    std::vector<State> states;
    Enter(states, 0);
    SetStates(std::move(states));
}

void Matcher::Add(const std::string& line) {
    lines_.push_back(line);
    std::vector<State> next;
    for (const State& state : states_) {
        Advance(state, next);
    }
    SetStates(std::move(next));
}

void Matcher::SetStates(std::vector<State> states) {
    states_ = std::move(states);
    if (!states_.empty()) {
        awaited_ = std::max_element(states_.begin(), states_.end(),
                                    [](const State& one, const State& other) {
                                        return one.element < other.element;
                                    })
                       ->element;
    }
}

// "..." may match nothing: what follows it is awaited, too.
void Matcher::Enter(std::vector<State>& states, std::size_t element) const {
    for (;; ++element) {
        const bool known = std::any_of(states.begin(), states.end(), [&](const State& state) {
            return state.element == element && state.group == kNoLine;
        });
        if (known) {
            return;
        }
        states.push_back({element, kNoLine});
        if (element == elements_->size() ||
            (*elements_)[element].kind != Element::Kind::kAnyLines) {
            return;
        }
    }
}

void Matcher::Advance(const State& state, std::vector<State>& next) const {
    if (state.element == elements_->size()) {
        return;
    }
    const Element& element = (*elements_)[state.element];
    if (element.kind == Element::Kind::kAnyLines) {
        Enter(next, state.element);
    } else if (element.kind == Element::Kind::kLine) {
        if (element.lines.front().pattern.Matches(lines_.back())) {
            Enter(next, state.element + 1);
        }
    } else {
        const std::size_t begin = state.group == kNoLine ? lines_.size() - 1 : state.group;
        const std::size_t count = lines_.size() - begin;
        const std::vector<std::size_t> line_of = AssignLines(element.lines, &lines_[begin], count);
        const auto unmatched = std::count(line_of.begin(), line_of.end(), kNoLine);
        if (line_of.size() - static_cast<std::size_t>(unmatched) < count) {
            return;
        }
        if (unmatched == 0) {
            Enter(next, state.element + 1);
        } else {
            next.push_back({state.element, begin});
        }
    }
}

}  // namespace play
