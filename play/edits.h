#pragma once

#include "play/session_file.h"

#include <string>
#include <vector>

namespace play {

/// Deletions and insertions that turn the lines of a file into those displayed.
class Edits {
  public:
    explicit Edits(const std::vector<std::string>& lines)
        : lines_(&lines), deleted_(lines.size()), inserted_(lines.size() + 1) {}

    void Delete(std::size_t line) { deleted_[line] = true; }
    /// Inserts before this line of the file, after text inserted there earlier.
    void Insert(std::size_t line, std::string text) { inserted_[line].push_back(std::move(text)); }

    [[nodiscard]] bool IsEmpty() const;
    [[nodiscard]] std::vector<std::string> Result() const;
    /// A unified diff from `name` to "displayed". A very long one is truncated.
    [[nodiscard]] std::string Diff(const std::string& name) const;
    /// The first line of the file that differs, and the column if another line replaces it: "12:5".
    [[nodiscard]] std::string FirstPlace() const;

  private:
    struct Row {
        char mark;
        const std::string* text;
    };
    [[nodiscard]] std::vector<Row> Rows() const;

    const std::vector<std::string>* lines_;
    std::vector<bool> deleted_;
    std::vector<std::vector<std::string>> inserted_;
};

/// Adds the fewest edits that make the step's output match `displayed`. Matching lines are
/// kept as they are in the file, with their wildcards.
void Align(const Step& step, const std::vector<std::string>& displayed, Edits& edits);

}  // namespace play
