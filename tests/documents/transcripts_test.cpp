// The conversations that the documents show, played again: by scripts/demo as it is, but with the
// programs of this build. scripts/record-transcripts has them written down instead.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace morvane_test {
namespace {

constexpr char kReadme[] = "README.md";
constexpr char kReadmeBlock[] = "console";

/// A run of the tool as documents show it: the command line behind a "$ ", then what appears, with
/// what is typed behind the prompts.
struct Conversation {
    struct Step {
        std::string output;  ///< ends with the prompt
        std::string answer;
    };

    std::string command;
    std::vector<Step> steps;
    std::string rest;  ///< what appears after the last answer
};

std::string Replace(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

Conversation ParseConversation(const std::string& text) {
    static const std::regex answered("(Vantor(?:/.*)? [>?]) (.+)");
    Conversation conversation;
    std::istringstream lines(text);
    std::getline(lines, conversation.command);
    conversation.command = Replace(conversation.command, "^\\$ ", "");
    std::string output;
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, answered)) {
            conversation.steps.push_back({output + match.str(1), match.str(2)});
            output.clear();
        } else {
            output += line + "\n";
        }
    }
    conversation.rest = output;
    return conversation;
}

std::string FormatConversation(const Conversation& conversation) {
    std::string text = "$ " + conversation.command + "\n";
    for (const Conversation::Step& step : conversation.steps)
        text += step.output + " " + step.answer + "\n";
    return text + conversation.rest;
}

// Output as documents show it: without colours and trailing blanks, without the prompts that
// were redrawn below a message, and with X for the random letters in the name of the demo's
// directory.
std::string AsDocumented(std::string_view bytes) {
    std::string text = AsSeen(bytes);
    text = Replace(text, " /[^\\n]*/morvane-demo\\.[A-Za-z0-9]{6}", " /tmp/morvane-demo.XXXXXX");
    text = Replace(text, "Vantor(/[^\\n]*)? [>?] \\n", "");
    return Replace(text, "[ \\t]+(?=\\n|$)", "");
}

// Whether a prompt is at the end of output as documents show it.
bool EndsInPrompt(const std::string& documented) {
    static const std::regex prompt("Vantor(/.*)? [>?]");
    return std::regex_match(documented.substr(documented.rfind('\n') + 1), prompt);
}

bool IsRecording() {
    return std::getenv("MORVANE_RECORD_TRANSCRIPTS") != nullptr;
}

// The news of a call must not come before its result has been printed, nor a transfer move before
// the tool has looked at it, on a busy machine either.
std::string Delays() {
    return " --announce-delay=" + std::to_string(Stretched(Duration(500)).count()) +
           " --start-delay=" + std::to_string(Stretched(Duration(1000)).count());
}

std::string SortedLines(const std::string& text) {
    std::vector<std::string> lines = FindAll(text + "\n", "(.*)\n");
    std::sort(lines.begin(), lines.end());
    std::string sorted;
    for (const std::string& line : lines) sorted += line + "\n";
    return sorted;
}

// Much cheaper than to look at all of the output each time that some has come.
bool StandsAtPrompt(std::string_view bytes) {
    constexpr std::size_t kRoom = 200;
    return EndsInPrompt(AsDocumented(bytes.substr(bytes.size() - std::min(bytes.size(), kRoom))));
}

/// The README, or an example: its keys, and the conversation that stands beside them.
class Document {
  public:
    explicit Document(const std::string& name) : name_(name), keys_(name) {
        if (!IsReadme()) name_.replace(name_.rfind('.'), std::string::npos, ".transcript");
    }

    const std::string& Name() const { return name_; }
    bool IsReadme() const { return keys_ == kReadme; }

    Conversation Read() const {
        const std::string text = ReadSource(name_);
        return ParseConversation(IsReadme() ? FencedBlock(text, kReadmeBlock) : text);
    }
    /// All that is needed to record it.
    Conversation Outline() const {
        if (IsReadme()) return Read();
        Conversation conversation;
        conversation.command = "scripts/demo < " + keys_;
        for (const std::string& key : FindAll(ReadSource(keys_), "(.*)\n"))
            conversation.steps.push_back({"", key});
        return conversation;
    }
    void Write(const Conversation& conversation) const {
        const std::string text = FormatConversation(conversation);
        WriteSource(name_,
                    IsReadme() ? ReplaceFencedBlock(ReadSource(name_), kReadmeBlock, text) : text);
    }

  private:
    std::string name_;
    std::string keys_;
};

/// Types what the conversation says when its prompts stand. The README's is on a terminal; the
/// others are played from files, and the demo finds a pipe.
class Transcripts : public testing::TestWithParam<std::string> {
  protected:
    const Document& document() const { return document_; }

    /// `take` gets what is to appear up to the next answer.
    template <typename Take>
    void Play(Conversation& conversation, const std::string& options, Take take) {
        const std::string command = conversation.command.substr(0, conversation.command.find(" <"));
        const bool on_terminal = document_.IsReadme();
        console_.emplace(tree_.Running(command + options,
                                       on_terminal ? Wiring::kPersonsTerminal : Wiring::kPipes));
        std::string echo;
        for (Conversation::Step& step : conversation.steps) {
            take(step.output, echo);
            console_->Type(step.answer);
            echo = on_terminal ? step.answer + "\n" : "";
        }
        console_->ExpectExit(0, Console::Rest::kIgnored);
        take(conversation.rest, echo);
    }

    // What both threads print at the start may come in another order.
    void Compare(const std::string& expected, bool in_any_order) {
        const auto form = [&](const std::string& text) {
            return in_any_order ? SortedLines(text) : text;
        };
        const auto is_expected = [&](std::string_view bytes) {
            return (StandsAtPrompt(bytes) || !EndsInPrompt(expected)) &&
                   form(AsDocumented(bytes)) == form(expected);
        };
        if (console_->TakeOutputIf(is_expected)) return;
        EXPECT_EQ(form(expected), form(AsDocumented(console_->Unconsumed())));
        FailTest(Here::Now(), document_.Name() + " shows what does not come.");
    }

    // What comes until a prompt stands, or the end, and nothing more for a while.
    std::string Record() {
        std::string before;
        std::string now;
        do {
            before = console_->Unconsumed();
            std::this_thread::sleep_for(Stretched(Duration(1000)));
            now = console_->Unconsumed();
        } while (now != before || !(StandsAtPrompt(now) || console_->HasEnded()));
        console_->TakeOutputIf([](std::string_view) { return true; });
        return AsDocumented(now);
    }

    void TearDown() override {
        if (!console_) return;
        if (HasFailure()) std::cout << console_->Story();
        console_->Finish();
    }

  private:
    Document document_{GetParam()};
    ScriptTree tree_;
    std::optional<Console> console_;
};

TEST_P(Transcripts, GoAsShown) {
    if (IsRecording()) {
        Conversation conversation = document().Outline();
        Play(conversation, "", [this](std::string& output, const std::string& echo) {
            output = Record().substr(echo.size());
        });
        document().Write(conversation);
        return;
    }
    Conversation conversation = document().Read();
    bool is_start = true;
    Play(conversation, Delays(), [&](const std::string& output, const std::string& echo) {
        Compare(echo + output, is_start);
        is_start = false;
    });
}

TEST_P(Transcripts, AreWhatTheirKeysPlay) {
    const Conversation outline = document().Outline();
    const Conversation conversation = document().Read();
    EXPECT_EQ(conversation.command, outline.command);
    ASSERT_EQ(conversation.steps.size(), outline.steps.size());
    for (std::size_t i = 0; i < conversation.steps.size(); ++i)
        EXPECT_EQ(conversation.steps[i].answer, outline.steps[i].answer) << "answer " << i;
}

std::vector<std::string> Documents() {
    std::vector<std::string> names = FindSources("^examples/.*\\.keys$");
    names.emplace_back(kReadme);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Documents, Transcripts, testing::ValuesIn(Documents()),
                         [](const auto& document) { return AsTestName(document.param); });

}  // namespace
}  // namespace morvane_test
