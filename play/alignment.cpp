#include "play/edits.h"
#include "play/matcher.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace play {
namespace {

/// The cheapest alignment of the first elements with the first lines, and its last move.
struct Cell {
    enum class Move { kNone, kMatch, kDelete, kInsert, kSkip, kAbsorb, kGroup };

    std::uint64_t cost = std::numeric_limits<std::uint64_t>::max();
    Move move = Move::kNone;
    std::size_t count = 0;  ///< number of lines, for kGroup
};

// The largest comparison, in cells. If a step needs more, all of its output is replaced.
constexpr std::size_t kLargestTable = 4'000'000;
constexpr std::uint64_t kInsert = 2;
// In "% any order", a replacement is written in the line's position, an additional line at the end.
constexpr std::uint64_t kReplaceInGroup = 1;
constexpr std::uint64_t kInsertIntoGroup = 3;
// More than all insertions: a line of the file that was displayed is kept even where "..." could
// match it.
constexpr std::uint64_t kDelete = kInsertIntoGroup * kLargestTable;

/// Computes a minimal edit script by dynamic programming.
class Alignment {
  public:
    Alignment(const Step& step, const std::vector<std::string>& displayed, Edits& edits)
        : step_(step), displayed_(displayed), edits_(edits) {}

    void Run() {
        SkipEqualEnds();
        if ((Elements() + 1) * (Lines() + 1) > kLargestTable) {
            ReplaceAll();
            return;
        }
        width_ = Lines() + 1;
        cells_.resize((Elements() + 1) * width_);
        At(0, 0).cost = 0;
        for (std::size_t element = 0; element <= Elements(); ++element) {
            if (element < Elements() && ElementAt(element).kind == Element::Kind::kAnyOrder) {
                FindPatternsOfLines(ElementAt(element));
                cheapest_begin_ = std::numeric_limits<std::uint64_t>::max();
            }
            for (std::size_t line = 0; line <= Lines(); ++line) {
                Leave(element, line);
            }
        }
        for (const Place& place : Path()) {
            Apply(place);
        }
    }

  private:
    /// A position in the table and the move that leads to it.
    struct Place {
        std::size_t element;
        std::size_t line;
        Cell move;
    };

    [[nodiscard]] std::size_t Elements() const { return last_element_ - first_element_; }
    [[nodiscard]] std::size_t Lines() const { return last_line_ - first_line_; }
    [[nodiscard]] const Element& ElementAt(std::size_t i) const {
        return step_.output[first_element_ + i];
    }
    [[nodiscard]] const std::string& LineAt(std::size_t i) const {
        return displayed_[first_line_ + i];
    }
    Cell& At(std::size_t element, std::size_t line) { return cells_[element * width_ + line]; }

    static bool Match(const Element& element, const std::string& line) {
        return element.kind == Element::Kind::kLine && element.lines.front().pattern.Matches(line);
    }

    void SkipEqualEnds() {
        while (Elements() > 0 && Lines() > 0 && Match(ElementAt(0), LineAt(0))) {
            ++first_element_;
            ++first_line_;
        }
        while (Elements() > 0 && Lines() > 0 &&
               Match(ElementAt(Elements() - 1), LineAt(Lines() - 1))) {
            --last_element_;
            --last_line_;
        }
    }

    void ReplaceAll() {
        for (std::size_t i = 0; i < Elements(); ++i) {
            DeleteElement(ElementAt(i));
        }
        for (std::size_t i = 0; i < Lines(); ++i) {
            Insert(Elements(), LineAt(i));
        }
    }

    void Offer(std::size_t element, std::size_t line, Cell offer) {
        // On equal cost the last offer wins: deletions precede insertions, as in other diffs.
        if (element <= Elements() && line <= Lines() && offer.cost <= At(element, line).cost) {
            At(element, line) = offer;
        }
    }

    void Leave(std::size_t element, std::size_t line) {
        const std::uint64_t cost = At(element, line).cost;
        if (element < Elements()) {
            const Element& next = ElementAt(element);
            if (next.kind == Element::Kind::kAnyLines) {
                Offer(element + 1, line, {cost, Cell::Move::kSkip, 0});
                Offer(element, line + 1, {cost, Cell::Move::kAbsorb, 0});
            } else {
                Offer(element + 1, line,
                      {cost + kDelete * next.lines.size(), Cell::Move::kDelete, 0});
            }
            if (line < Lines() && Match(next, LineAt(line))) {
                Offer(element + 1, line + 1, {cost, Cell::Move::kMatch, 0});
            }
            if (next.any_lines) {
                LeaveByGroupWithAnyLines(element, line);
            } else if (next.kind == Element::Kind::kAnyOrder) {
                LeaveByGroup(element, line);
            }
        }
        Offer(element, line + 1, {cost + kInsert, Cell::Move::kInsert, 0});
    }

    void FindPatternsOfLines(const Element& group) {
        patterns_of_.resize(Lines());
        for (std::size_t line = 0; line < Lines(); ++line) {
            patterns_of_[line] = FindPatterns(group.lines, LineAt(line));
        }
    }

    void LeaveByGroup(std::size_t element, std::size_t line) {
        const std::size_t patterns = ElementAt(element).lines.size();
        // Limits the run time.
        const std::size_t most = std::min(2 * patterns, Lines() - line);
        Assignment assignment(patterns);
        for (std::size_t count = 1; count <= most; ++count) {
            assignment.Add(patterns_of_[line + count - 1]);
            const std::size_t missing = patterns - assignment.Matched();
            const std::size_t others = count - assignment.Matched();
            const std::size_t replaced = std::min(missing, others);
            if (assignment.Matched() > 0) {
                const std::uint64_t change = kDelete * missing + kReplaceInGroup * replaced +
                                             kInsertIntoGroup * (others - replaced);
                Offer(element + 1, line + count,
                      {At(element, line).cost + change, Cell::Move::kGroup, count});
            }
        }
    }

    // Other lines cost nothing, so starting at a later line is better only if the cost so far is
    // lower.
    void LeaveByGroupWithAnyLines(std::size_t element, std::size_t line) {
        const std::uint64_t cost = At(element, line).cost;
        if (cost >= cheapest_begin_) {
            return;
        }
        cheapest_begin_ = cost;
        const std::size_t patterns = ElementAt(element).lines.size();
        Assignment assignment(patterns);
        for (std::size_t end = line; end < Lines() && assignment.Matched() < patterns; ++end) {
            if (assignment.Add(patterns_of_[end])) {
                const std::size_t missing = patterns - assignment.Matched();
                Offer(element + 1, end + 1,
                      {cost + kDelete * missing, Cell::Move::kGroup, end + 1 - line});
            }
        }
    }

    // The moves from the beginning to the end.
    std::vector<Place> Path() {
        std::vector<Place> path;
        std::size_t element = Elements();
        std::size_t line = Lines();
        while (element > 0 || line > 0) {
            const Cell cell = At(element, line);
            path.push_back({element, line, cell});
            if (cell.move != Cell::Move::kInsert && cell.move != Cell::Move::kAbsorb) {
                --element;
            }
            if (cell.move == Cell::Move::kGroup) {
                line -= cell.count;
            } else if (cell.move != Cell::Move::kDelete && cell.move != Cell::Move::kSkip) {
                --line;
            }
        }
        std::reverse(path.begin(), path.end());
        return path;
    }

    void Apply(const Place& place) {
        if (place.move.move == Cell::Move::kDelete) {
            DeleteElement(ElementAt(place.element - 1));
        } else if (place.move.move == Cell::Move::kInsert) {
            Insert(place.element, LineAt(place.line - 1));
        } else if (place.move.move == Cell::Move::kGroup) {
            ApplyGroup(ElementAt(place.element - 1), &LineAt(place.line - place.move.count),
                       place.move.count);
        }
    }

    // Inserts before this element, directly after the one before it.
    void Insert(std::size_t element, const std::string& line) {
        const std::size_t before = first_element_ + element;
        edits_.Insert(before == 0 ? step_.begin : step_.output[before - 1].end, WriteGeneral(line));
    }

    void DeleteElement(const Element& element) {
        for (std::size_t line = element.begin; line < element.end; ++line) {
            if (line != element.any_lines) {
                edits_.Delete(line);
            }
        }
    }

    void ApplyGroup(const Element& group, const std::string* lines, std::size_t count) {
        Assignment assignment(group.lines.size());
        for (std::size_t line = 0; line < count; ++line) {
            assignment.Add(FindPatterns(group.lines, lines[line]));
        }
        for (std::size_t pattern = 0; pattern < group.lines.size(); ++pattern) {
            if (assignment.LineOf(pattern) == kNone) {
                edits_.Delete(group.lines[pattern].line);
            }
        }
        for (std::size_t line = 0; line < count; ++line) {
            if (assignment.PatternOf(line) == kNone && !group.any_lines) {
                edits_.Insert(group.end - 1, WriteGeneral(lines[line]));
            }
        }
    }

    const Step& step_;
    const std::vector<std::string>& displayed_;
    Edits& edits_;
    std::size_t first_element_ = 0;
    std::size_t last_element_ = step_.output.size();
    std::size_t first_line_ = 0;
    std::size_t last_line_ = displayed_.size();
    std::size_t width_ = 0;
    std::vector<Cell> cells_;
    std::vector<std::vector<std::size_t>> patterns_of_;  // those of a group that match each line
    std::uint64_t cheapest_begin_ = 0;                   // lowest cost before a group with "..."
};

}  // namespace

void Align(const Step& step, const std::vector<std::string>& displayed, Edits& edits) {
    Alignment(step, displayed, edits).Run();
}

}  // namespace play
