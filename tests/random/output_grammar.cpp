#include "random/output_grammar.h"

#include "support/menus.h"
#include "support/text_form.h"

#include <regex>

namespace morvane_test {
namespace {

constexpr std::size_t kLongestItem = 2000;
constexpr std::size_t kShownBytes = 300;

// Patterns for the colours and text of a message.
const std::string kGreen = "\x1b\\[1;32m";
const std::string kRed = "\x1b\\[1;31m";
const std::string kReset = "\x1b\\[0m";
const std::string kText = "([^\x1b]{0,999})";

class Reader {
  public:
    explicit Reader(std::string_view output) : output_(output) {}

    /// Parses from `position`. Returns the offset of the first unparsable byte, or the size.
    std::size_t Read(std::size_t position) {
        static const std::string path = PathPattern();
        static const std::regex prompt(kGreen + "(" + path + ")" + kReset + kRed + " [>?] " +
                                       kReset);
        static const std::regex message("(?:" + kRed + "|" + kReset + "|" + kGreen + "(?!" + path +
                                        kReset + "(?:" + kRed + " [>?]|$)))" + kText + kReset);
        static const std::regex notification("\n(?:" + kGreen + "|" + kRed + "|" + kReset + ")" +
                                             kText + kGreen + "(" + path + ")" + kRed + " > " +
                                             kReset);
        for (; position < output_.size(); position += static_cast<std::size_t>(item_.length())) {
            if (Is(prompt, position)) {
                prompt_ = item_[1];
            } else if (Is(message, position)) {
                prompt_.reset();
                messages_.push_back(item_[1]);
            } else if (prompt_ && Is(notification, position) && item_[2] == *prompt_) {
                messages_.push_back(item_[1]);
            } else {
                break;
            }
        }
        return position;
    }

    const std::vector<std::string>& Messages() const { return messages_; }

  private:
    static std::string PathPattern() {
        std::string segments;
        for (const PromptRow& row : Prompts()) segments += "|" + row.segment;
        return "Vantor(?:" + segments.substr(1) + ")";
    }

    bool Is(const std::regex& item, std::size_t position) {
        return std::regex_search(output_.data() + position, output_.data() + output_.size(), item_,
                                 item, std::regex_constants::match_continuous);
    }

    std::string_view output_;
    std::vector<std::string> messages_;
    std::cmatch item_;
    std::optional<std::string> prompt_;  // displayed prompt
};

}  // namespace

OutputReading ReadOutput(std::string_view output, bool truncated, std::optional<std::size_t> gap) {
    Reader reader(output);
    const std::size_t end = reader.Read(0);
    if (end == output.size() || (truncated && output.size() - end < kLongestItem))
        return {reader.Messages(), std::nullopt};
    const bool may_miss = gap && end + kLongestItem >= *gap;
    for (std::size_t next = end; may_miss && next < output.size();
         next = output.find('\x1b', next + 1)) {
        Reader attempt = reader;
        if (attempt.Read(next) == output.size()) return {attempt.Messages(), std::nullopt};
    }
    return {reader.Messages(),
            "neither a message nor a prompt: " + Escaped(output.substr(end, kShownBytes))};
}

}  // namespace morvane_test
