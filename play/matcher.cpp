#include "play/matcher.h"

#include <algorithm>
#include <utility>

namespace play {

std::vector<std::size_t> FindPatterns(const std::vector<PatternLine>& patterns,
                                      const std::string& line) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        if (patterns[i].pattern.Matches(line)) {
            found.push_back(i);
        }
    }
    return found;
}

// Searches for an augmenting path in the bipartite graph, breadth first.
bool Assignment::Add(std::vector<std::size_t> patterns) {
    std::vector<std::size_t> lines = {patterns_of_.size()};
    std::vector<std::size_t> reached_from(line_of_.size(), kNone);
    patterns_of_.push_back(std::move(patterns));
    pattern_of_.push_back(kNone);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (const std::size_t pattern : patterns_of_[lines[i]]) {
            if (reached_from[pattern] != kNone) {
                continue;
            }
            reached_from[pattern] = lines[i];
            if (line_of_[pattern] == kNone) {
                Augment(pattern, reached_from);
                return true;
            }
            lines.push_back(line_of_[pattern]);
        }
    }
    return false;
}

void Assignment::Augment(std::size_t pattern, const std::vector<std::size_t>& reached_from) {
    while (pattern != kNone) {
        const std::size_t line = reached_from[pattern];
        line_of_[pattern] = line;
        pattern = std::exchange(pattern_of_[line], pattern);
    }
    ++matched_;
}

Matcher::Matcher(const std::vector<Element>& elements)
    : elements_(&elements), entered_(elements.size()) {
    std::vector<State> states;
    Enter(states, 0);
    SetStates(std::move(states));
}

void Matcher::Add(const std::string& line) {
    lines_.push_back(line);
    std::vector<State> next;
    for (State& state : states_) {
        Advance(state, next);
    }
    SetStates(std::move(next));
}

std::size_t Matcher::AwaitedLine() const {
    const std::vector<PatternLine>& lines = (*elements_)[awaited_].lines;
    const auto state = std::find_if(states_.begin(), states_.end(), [&](const State& one) {
        return one.element == awaited_ && one.group;
    });
    std::size_t pattern = 0;
    while (state != states_.end() && state->group->LineOf(pattern) != kNone) {
        ++pattern;
    }
    return lines[pattern].line;
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

// "..." may match nothing, so the element after it is awaited, too. A group with "..." is entered
// only once: starting it at a later line matches nothing more.
void Matcher::Enter(std::vector<State>& states, std::size_t element) {
    for (;; ++element) {
        const bool known = std::any_of(states.begin(), states.end(), [&](const State& state) {
            return state.element == element && !state.group;
        });
        const bool is_last = element == elements_->size();
        if (known || (!is_last && (*elements_)[element].any_lines && entered_[element])) {
            return;
        }
        states.push_back({element, std::nullopt});
        if (is_last) {
            return;
        }
        entered_[element] = true;
        if ((*elements_)[element].kind != Element::Kind::kAnyLines) {
            return;
        }
    }
}

void Matcher::Advance(State& state, std::vector<State>& next) {
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
        Assignment group = state.group ? std::move(*state.group) : Assignment(element.lines.size());
        if (!group.Add(FindPatterns(element.lines, lines_.back())) && !element.any_lines) {
            return;
        }
        if (group.Matched() == element.lines.size()) {
            Enter(next, state.element + 1);
        } else {
            next.push_back({state.element, std::move(group)});
        }
    }
}

}  // namespace play
