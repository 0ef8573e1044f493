#include "play/edits.h"

#include <algorithm>

namespace play {
namespace {

constexpr std::size_t kContext = 3;
constexpr std::size_t kMostRows = 400;

/// Rows of a diff that are written as one hunk.
struct Hunk {
    std::size_t begin;
    std::size_t end;
};

bool IsChange(char mark) {
    return mark != ' ';
}

template <typename Rows>
std::vector<Hunk> FindHunks(const Rows& rows) {
    std::vector<Hunk> hunks;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!IsChange(rows[i].mark)) {
            continue;
        }
        const std::size_t begin = i - std::min(i, kContext);
        const std::size_t end = std::min(i + kContext + 1, rows.size());
        if (!hunks.empty() && begin <= hunks.back().end) {
            hunks.back().end = end;
        } else {
            hunks.push_back({begin, end});
        }
    }
    return hunks;
}

// As in a unified diff: "12,5". An empty range has the number of the line before it.
std::string Range(std::size_t begin, std::size_t count) {
    return std::to_string(count == 0 ? begin : begin + 1) + "," + std::to_string(count);
}

}  // namespace

bool Edits::IsEmpty() const {
    return std::none_of(deleted_.begin(), deleted_.end(), [](bool deleted) { return deleted; }) &&
           std::all_of(inserted_.begin(), inserted_.end(),
                       [](const std::vector<std::string>& lines) { return lines.empty(); });
}

std::string Edits::FirstPlace() const {
    std::size_t line = 0;
    while (line < deleted_.size() && !deleted_[line] && inserted_[line].empty()) {
        ++line;
    }
    std::size_t end = line;
    while (end < deleted_.size() && deleted_[end] && inserted_[end].empty()) {
        ++end;
    }
    std::string place = std::to_string(std::min(line + 1, lines_->size()));
    if (end == line || inserted_[end].empty()) {
        return place;
    }
    const std::string& written = (*lines_)[line];
    const std::string& displayed = inserted_[end].front();
    const auto equal =
        std::mismatch(written.begin(), written.end(), displayed.begin(), displayed.end());
    return place + ":" + std::to_string(equal.first - written.begin() + 1);
}

std::vector<Edits::Row> Edits::Rows() const {
    std::vector<Row> rows;
    for (std::size_t line = 0; line <= lines_->size(); ++line) {
        for (const std::string& text : inserted_[line]) {
            rows.push_back({'+', &text});
        }
        if (line < lines_->size()) {
            rows.push_back({deleted_[line] ? '-' : ' ', &(*lines_)[line]});
        }
    }
    return rows;
}

std::vector<std::string> Edits::Result() const {
    std::vector<std::string> result;
    for (const Row& row : Rows()) {
        if (row.mark != '-') {
            result.push_back(*row.text);
        }
    }
    return result;
}

std::string Edits::Diff(const std::string& name) const {
    const std::vector<Row> rows = Rows();
    std::string diff = "--- " + name + "\n+++ displayed\n";
    const auto count = [&rows](std::size_t begin, std::size_t end, char other) {
        return static_cast<std::size_t>(
            std::count_if(rows.begin() + static_cast<std::ptrdiff_t>(begin),
                          rows.begin() + static_cast<std::ptrdiff_t>(end),
                          [other](const Row& row) { return row.mark != other; }));
    };
    for (const Hunk& hunk : FindHunks(rows)) {
        diff += "@@ -" + Range(count(0, hunk.begin, '+'), count(hunk.begin, hunk.end, '+')) + " +" +
                Range(count(0, hunk.begin, '-'), count(hunk.begin, hunk.end, '-')) + " @@\n";
        for (std::size_t i = hunk.begin; i < hunk.end; ++i) {
            if (i == hunk.begin + kMostRows) {
                return diff + "(" + std::to_string(rows.size() - i) + " more lines)\n";
            }
            diff += rows[i].mark + *rows[i].text + "\n";
        }
    }
    return diff;
}

}  // namespace play
