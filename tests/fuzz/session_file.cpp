#include "play/session_file.h"

#include "fuzz/fuzz.h"
#include "play/answer.h"
#include "play/display.h"
#include "play/edits.h"
#include "play/matcher.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvane_fuzz {
namespace {

std::optional<play::SessionFile> Parse(const std::string& text) {
    try {
        return play::ParseSession("a", text);
    } catch (const std::runtime_error& error) {
        Require(std::string(error.what()).compare(0, 2, "a:") == 0,
                "an error begins with the location", error.what());
        return std::nullopt;
    }
}

std::vector<std::string> Lines(const std::string& bytes) {
    play::Display display;
    display.Feed(bytes);
    display.End();
    std::vector<std::string> lines;
    for (const play::DisplayedLine& line : display.TakeLines()) lines.push_back(line.text);
    return lines;
}

bool Matches(const play::Step& step, const std::vector<std::string>& lines) {
    play::Matcher matcher(step.output);
    for (const std::string& line : lines) matcher.Add(line);
    return matcher.IsComplete();
}

/// Tries every way in which lines can match elements.
class Model {
  public:
    Model(const std::vector<play::Element>& elements, const std::vector<std::string>& lines)
        : elements_(elements), lines_(lines) {}

    // The run time of Matches() grows exponentially.
    bool IsSmall() const {
        std::size_t patterns = 0;
        for (const play::Element& element : elements_) patterns += element.lines.size();
        return elements_.size() <= 6 && patterns <= 6 && lines_.size() <= 8;
    }

    /// Whether the lines from `line` on match the elements from `element` on, of which the patterns
    /// in the bit mask `matched` have already matched.
    bool Matches(std::size_t element = 0, unsigned matched = 0, std::size_t line = 0) const {
        if (element == elements_.size()) return line == lines_.size();
        const play::Element& next = elements_[element];
        const bool admits_any = next.kind == play::Element::Kind::kAnyLines || next.any_lines;
        if (matched + 1 == 1U << next.lines.size() && Matches(element + 1, 0, line)) return true;
        if (line == lines_.size()) return false;
        for (std::size_t i = 0; i < next.lines.size(); ++i) {
            if ((matched >> i & 1U) == 0 && next.lines[i].pattern.Matches(lines_[line]) &&
                Matches(element, matched | 1U << i, line + 1))
                return true;
        }
        return admits_any && Matches(element, matched, line + 1);
    }

  private:
    const std::vector<play::Element>& elements_;
    const std::vector<std::string>& lines_;
};

void CheckLine(const std::string& line) {
    for (const std::string& written : {play::WriteLiteral(line), play::WriteGeneral(line)})
        Require(play::Pattern(written).Matches(line), "a written line matches", written);
    if (line.find('\x04') == std::string::npos && line.size() < 4000)
        RequireEqual(play::ParseAnswer(play::WriteAnswer(line)).keys, line + "\n",
                     "a written answer is read back");
}

// The updated file must match the output in its first step.
void CheckUpdate(const play::SessionFile& file, const std::vector<std::string>& lines) {
    play::Edits edits(file.lines);
    play::Align(file.steps.front(), lines, edits);
    const bool agrees = Matches(file.steps.front(), lines);
    const Model model(file.steps.front().output, lines);
    if (model.IsSmall()) RequireEqual(agrees, model.Matches(), "the model agrees");
    if (agrees) Require(edits.IsEmpty(), "a match needs no edits");
    std::string text;
    for (const std::string& line : edits.Result()) text += line + "\n";
    const std::optional<play::SessionFile> updated = Parse(text);
    // Some updates cannot be parsed, such as a file without output: the user must edit them.
    if (updated) Require(Matches(updated->steps.front(), lines), "an updated file agrees", text);
}

}  // namespace

/// A session file, a zero byte, and the output.
void Check(Input input) {
    const std::string bytes = input.Rest();
    const std::size_t zero = std::min(bytes.find('\0'), bytes.size());
    const std::vector<std::string> lines = Lines(bytes.substr(std::min(zero + 1, bytes.size())));
    for (const std::string& line : lines) CheckLine(line);
    const std::optional<play::SessionFile> file = Parse(bytes.substr(0, zero));
    if (!file) return;
    Require(file->steps.back().action == play::Step::Action::kEnd, "the last step is the end");
    CheckUpdate(*file, lines);
}

}  // namespace morvane_fuzz
