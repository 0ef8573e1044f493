#include "play/session_file.h"

#include "play/answer.h"
#include "play/prompt.h"
#include "play/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace play {
namespace {

constexpr std::string_view kCommand = "$ ";
constexpr std::string_view kTool = "morvane";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kSignal = "signal ";
constexpr int kLastSignal = 64;
constexpr int kLastStatus = 255;

// Removes the first word, and the blanks around it, from `text`.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return word;
}

std::optional<int> ParseNumber(std::string_view text) {
    constexpr std::size_t kDigits = 8;
    if (text.empty() || text.size() > kDigits ||
        text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    return std::stoi(std::string(text));
}

// Colour sequences begin with a control character, too.
bool HasControlCharacter(std::string_view line) {
    return std::any_of(line.begin(), line.end(), IsControl);
}

class Parser {
  public:
    Parser(std::string name, std::string_view text) {
        file_.name = std::move(name);
        if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
            text.remove_prefix(kByteOrderMark.size());
        }
        while (!text.empty()) {
            std::string_view line = text.substr(0, text.find('\n'));
            text.remove_prefix(std::min(line.size() + 1, text.size()));
            if (!line.empty() && line.back() == '\r') {
                line.remove_suffix(1);
            }
            file_.lines.emplace_back(line);
        }
    }

    SessionFile Parse() {
        for (; line_ < file_.lines.size(); ++line_) {
            ParseLine(file_.lines[line_]);
        }
        if (group_) {
            line_ = group_->begin;
            Fail(R"("% any order" without "% end")");
        }
        if (is_head_) {
            line_ = 0;
            Fail("no output and no answer");
        }
        Finish(Step::Action::kEnd, "", "");
        return std::move(file_);
    }

  private:
    enum class Place { kHead, kBody, kGroup };

    struct Directive {
        std::string_view name;
        Place place;
        void (Parser::*parse)(std::string_view rest);
    };
    static const std::array<Directive, 8> kDirectives;

    [[noreturn]] void Fail(const std::string& reason) const {
        throw std::runtime_error(file_.name + ":" + std::to_string(line_ + 1) + ": " + reason);
    }

    void ParseLine(std::string_view line) {
        if (line.find('\0') != std::string_view::npos) {
            Fail("not UTF-8 text: a zero byte, as in UTF-16");
        }
        if (HasControlCharacter(line)) {
            Fail("a control character");
        }
        if (line.substr(0, 1) == "#") {
            return;
        }
        if (line.substr(0, 1) == "%") {
            ParseDirective(line.substr(1));
        } else if (is_head_ && line.substr(0, kCommand.size()) == kCommand) {
            ParseCommand(line.substr(kCommand.size()));
        } else {
            BeginBody();
            ParseOutput(line);
        }
    }

    void ParseDirective(std::string_view rest) {
        const std::string_view name = TakeWord(rest);
        const auto* const directive =
            std::find_if(kDirectives.begin(), kDirectives.end(),
                         [name](const Directive& one) { return one.name == name; });
        if (directive == kDirectives.end()) {
            Fail("unknown directive " + Quoted(name));
        }
        if (directive->place == Place::kHead && !is_head_) {
            Fail(Quoted("% " + std::string(name)) + " belongs to the head, before all output");
        }
        if (directive->place != Place::kHead) {
            BeginBody();
        }
        if (group_ && directive->place != Place::kGroup) {
            Fail(Quoted("% " + std::string(name)) + R"( inside "% any order")");
        }
        (this->*directive->parse)(WithoutTrailingBlanks(rest));
    }

    void ParseCommand(std::string_view rest) {
        if (has_command_) {
            Fail("a second command");
        }
        if (TakeWord(rest) != kTool) {
            Fail(R"(the command must be "morvane"; name another program behind "--")");
        }
        has_command_ = true;
        while (!rest.empty()) {
            file_.arguments.emplace_back(TakeWord(rest));
        }
    }

    void ParseNeeds(std::string_view rest) {
        if (rest.empty()) {
            Fail(R"("% needs" without a text)");
        }
        file_.needs.emplace_back(rest);
    }

    void ParseIgnore(std::string_view rest) {
        if (rest.empty()) {
            Fail(R"("% ignore" without a text)");
        }
        file_.ignored.emplace_back(rest);
    }

    [[nodiscard]] Duration RequireDuration(std::string_view text) const {
        const std::optional<Duration> duration = ParseDuration(text);
        if (!duration) {
            Fail(Quoted(text) + " is no time such as 10s, 500ms or 2min");
        }
        return *duration;
    }

    void ParseTimeout(std::string_view rest) { file_.limit = RequireDuration(rest); }
    void ParseAwait(std::string_view rest) { limit_ = RequireDuration(rest); }

    void ParseExit(std::string_view rest) {
        const bool by_signal = rest.substr(0, kSignal.size()) == kSignal;
        const std::optional<int> number =
            ParseNumber(by_signal ? rest.substr(kSignal.size()) : rest);
        if (!number || (by_signal && *number == 0) ||
            *number > (by_signal ? kLastSignal : kLastStatus)) {
            Fail(Quoted(rest) + " is no exit status and no signal such as \"signal 15\"");
        }
        file_.ending = {by_signal, *number};
    }

    void ParseTell(std::string_view rest) {
        if (rest.empty()) {
            Fail(R"("% tell" without a command)");
        }
        // Only before "% tell" is a prompt without an answer awaited; elsewhere a notification
        // redrew it.
        Finish(Step::Action::kTell, bare_prompt_, std::string(rest));
    }

    void ParseAnyOrder(std::string_view rest) {
        if (rest != "order") {
            Fail("unknown directive " + Quoted("any " + std::string(rest)));
        }
        if (group_) {
            Fail(R"("% any order" inside "% any order")");
        }
        group_ = {Element::Kind::kAnyOrder, line_, line_, {}, limit_};
    }

    void ParseEnd(std::string_view rest) {
        if (!rest.empty()) {
            Fail("unknown directive " + Quoted("end " + std::string(rest)));
        }
        if (!group_) {
            Fail(R"("% end" without "% any order")");
        }
        if (group_->lines.empty()) {
            Fail(R"("% any order" without lines)");
        }
        group_->end = line_ + 1;
        const bool has_any_lines = group_->any_lines.has_value();
        step_.output.push_back(std::move(*group_));
        group_.reset();
        if (has_any_lines) {
            PushAnyLines(line_ + 1);
        }
    }

    void ParseOutput(std::string_view line) {
        // Editors remove the blank after a prompt that has no answer.
        const std::string padded = std::string(line) + " ";
        if (const std::size_t length = PromptLength(padded); length > 0) {
            ParsePrompt(padded.substr(0, length), line.substr(std::min(length, line.size())));
            return;
        }
        bare_prompt_.clear();
        const bool any_lines = WithoutTrailingBlanks(line) == "...";
        if (group_ && any_lines) {
            group_->any_lines = line_;
        } else if (group_) {
            group_->lines.push_back({line_, Pattern(line)});
        } else if (any_lines) {
            PushAnyLines(line_);
        } else {
            step_.output.push_back(
                {Element::Kind::kLine, line_, line_ + 1, {{line_, Pattern(line)}}, limit_});
        }
    }

    void PushAnyLines(std::size_t begin) {
        step_.output.push_back({Element::Kind::kAnyLines, begin, line_ + 1, {}, limit_});
    }

    void ParsePrompt(std::string prompt, std::string_view answer) {
        if (group_) {
            Fail(R"(a prompt inside "% any order")");
        }
        if (WithoutTrailingBlanks(answer).empty()) {
            bare_prompt_ = std::move(prompt);
            return;
        }
        try {
            ParseAnswer(answer);
        } catch (const std::invalid_argument& error) {
            Fail(error.what());
        }
        Finish(Step::Action::kType, std::move(prompt), std::string(answer));
        limit_.reset();
    }

    void BeginBody() {
        if (is_head_) {
            is_head_ = false;
            step_.begin = line_;
        }
    }

    void Finish(Step::Action action, std::string prompt, std::string text) {
        step_.action = action;
        step_.line = line_;
        step_.prompt = std::move(prompt);
        step_.text = std::move(text);
        step_.limit = limit_;
        file_.steps.push_back(std::move(step_));
        step_ = {};
        step_.begin = line_ + 1;
        bare_prompt_.clear();
    }

    SessionFile file_;
    std::size_t line_ = 0;
    bool is_head_ = true;
    bool has_command_ = false;
    Step step_;
    std::optional<Element> group_;
    std::optional<Duration> limit_;
    std::string bare_prompt_;
};

const std::array<Parser::Directive, 8> Parser::kDirectives = {{
    {"needs", Place::kHead, &Parser::ParseNeeds},
    {"ignore", Place::kHead, &Parser::ParseIgnore},
    {"timeout", Place::kHead, &Parser::ParseTimeout},
    {"exit", Place::kHead, &Parser::ParseExit},
    {"await", Place::kBody, &Parser::ParseAwait},
    {"tell", Place::kBody, &Parser::ParseTell},
    {"any", Place::kGroup, &Parser::ParseAnyOrder},
    {"end", Place::kGroup, &Parser::ParseEnd},
}};

struct Unit {
    std::string_view name;
    int milliseconds;
};

constexpr std::array<Unit, 4> kUnits = {{{"", 1000}, {"s", 1000}, {"ms", 1}, {"min", 60000}}};

}  // namespace

std::optional<Duration> ParseDuration(std::string_view text) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::optional<int> number = ParseNumber(text.substr(0, digits));
    const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(), [&](const Unit& one) {
        return one.name == text.substr(digits);
    });
    if (!number || unit == kUnits.end()) {
        return std::nullopt;
    }
    const Duration duration = std::int64_t{*number} * Duration(unit->milliseconds);
    return duration > Duration(0) && duration <= kLongestLimit ? std::optional(duration)
                                                               : std::nullopt;
}

std::string Write(const Ending& ending) {
    return std::string(ending.by_signal ? kSignal : "") + std::to_string(ending.number);
}

std::string Describe(Duration duration) {
    return duration.count() % 1000 == 0 ? std::to_string(duration.count() / 1000) + " s"
                                        : std::to_string(duration.count()) + " ms";
}

SessionFile ParseSession(const std::string& name, std::string_view text) {
    return Parser(name, text).Parse();
}

}  // namespace play
