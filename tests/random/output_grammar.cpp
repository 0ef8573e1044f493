#include "random/output_grammar.h"

#include "support/menus.h"
#include "support/messages.h"
#include "support/text_form.h"

#include <algorithm>

namespace morvane_test {
namespace {

constexpr std::string_view kTitle = "Vantor";
constexpr std::string_view kMenuMarker = " > ";
constexpr std::string_view kValueMarker = " ? ";
constexpr std::string_view kColours[] = {kGreenSequence, kRedSequence, kResetSequence};
constexpr std::size_t kLongestText = 999;
constexpr std::size_t kShownBytes = 300;

/// Leaves the reading; `at` is where the output ceases to make sense.
struct Nonsense {
    std::string what;
    std::size_t at;
};

class Reader {
  public:
    explicit Reader(std::string_view output) : output_(output) {}

    /// What and where it is if not all the rest makes sense.
    std::optional<Nonsense> ReadRest() try {
        while (position_ < output_.size()) ReadItem();
        return std::nullopt;
    } catch (const Nonsense& nonsense) {
        return nonsense;
    }

    void SkipTo(std::size_t position) { position_ = position; }
    OutputReading& Reading() { return reading_; }

  private:
    void ReadItem() {
        start_ = position_;
        if (output_[position_] == '\n') return ReadNotice();
        const std::string_view colour = TakeColour();
        const std::string_view text = TakeText();
        Take(kResetSequence);
        standing_.reset();
        if (colour == kGreenSequence && IsPath(text) && StartsMarker()) return ReadPrompt(text);
        reading_.messages.emplace_back(text);
    }

    // A message of the other thread while a prompt stands.
    void ReadNotice() {
        if (!standing_) Complain("a message on a new line although no prompt stands");
        Take("\n");
        TakeColour();
        const std::string_view text = TakeText();
        Take(kGreenSequence);
        Take(*standing_);
        Take(kRedSequence);
        Take(kMenuMarker);
        Take(kResetSequence);
        reading_.messages.emplace_back(text);
    }

    void ReadPrompt(std::string_view path) {
        Take(kRedSequence);
        const bool asks_value = output_.substr(position_, kValueMarker.size()) == kValueMarker;
        Take(asks_value ? kValueMarker : kMenuMarker);
        Take(kResetSequence);
        standing_ = path;
        reading_.prompts.push_back({std::string(path.substr(kTitle.size())), asks_value});
    }

    static bool IsPath(std::string_view text) {
        return text.substr(0, kTitle.size()) == kTitle &&
               std::any_of(Prompts().begin(), Prompts().end(), [text](const PromptRow& row) {
                   return row.segment == text.substr(kTitle.size());
               });
    }

    bool StartsMarker() const {
        const std::string_view rest = output_.substr(position_);
        const std::string red = kRedSequence;
        return rest.empty() || rest.substr(0, red.size() + 2) == red + " >" ||
               rest.substr(0, red.size() + 2) == red + " ?";
    }

    std::string_view TakeColour() {
        for (const std::string_view colour : kColours)
            if (output_.substr(position_, colour.size()) == colour) {
                position_ += colour.size();
                return colour;
            }
        Complain("no colour where a message begins");
    }

    std::string_view TakeText() {
        const std::size_t end = std::min(output_.find('\x1b', position_), output_.size());
        const std::string_view text = output_.substr(position_, end - position_);
        if (text.size() > kLongestText) Complain("a text that is too long");
        position_ = end;
        return text;
    }

    void Take(std::string_view bytes) {
        if (output_.substr(position_, bytes.size()) != bytes)
            Complain("not " + Escaped(bytes) + " where it should be");
        position_ += bytes.size();
    }

    [[noreturn]] void Complain(const std::string& what) const { throw Nonsense{what, start_}; }

    std::string_view output_;
    OutputReading reading_;
    std::size_t position_ = 0;
    std::size_t start_ = 0;                     // of the item being read
    std::optional<std::string_view> standing_;  // the prompt's path, from its marker on
};

// Whether the reader can go on behind a gap; it is at the output's end if so.
bool ReadsOnBehindGap(Reader& reader, std::string_view output, std::size_t start) {
    for (std::size_t next = start; next < output.size(); next = output.find('\x1b', next + 1)) {
        Reader attempt = reader;
        attempt.SkipTo(next);
        if (attempt.ReadRest()) continue;
        reader = attempt;
        return true;
    }
    return false;
}

// Whether what begins at `start` may be all right but for its end, which is missing.
bool MayBeCut(std::string_view output, std::size_t start) {
    return output.size() - start < 2 * kLongestText;
}

}  // namespace

OutputReading ReadOutput(std::string_view output, bool cut, std::optional<std::size_t> gap) {
    Reader reader(output);
    const std::optional<Nonsense> nonsense = reader.ReadRest();
    if (!nonsense || (cut && MayBeCut(output, nonsense->at))) return reader.Reading();
    const bool may_miss = gap && nonsense->at + 2 * kLongestText >= *gap;
    if (!may_miss || !ReadsOnBehindGap(reader, output, nonsense->at))
        reader.Reading().mistake =
            nonsense->what + ": " + Escaped(output.substr(nonsense->at, kShownBytes));
    return reader.Reading();
}

}  // namespace morvane_test
