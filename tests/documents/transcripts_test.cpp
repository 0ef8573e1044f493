// Plays the transcripts in the documents with scripts/demo and the programs of this build, and
// compares the output. For scripts/record-transcripts it replaces them by the actual output.

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

/// A transcript: a command line after "$ ", then the output with typed lines after prompts.
struct Recording {
    struct Step {
        std::string output;  ///< ends with the prompt
        std::string answer;
    };

    std::string command;
    std::vector<Step> steps;
    std::string rest;  ///< the output after the last answer
};

std::string Replace(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

Recording ParseRecording(const std::string& text) {
    static const std::regex answered("(Vantor(?:/.*)? [>?]) (.+)");
    Recording recording;
    std::istringstream lines(text);
    std::getline(lines, recording.command);
    recording.command = Replace(recording.command, "^\\$ ", "");
    std::string output;
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, answered)) {
            recording.steps.push_back({output + match.str(1), match.str(2)});
            output.clear();
        } else {
            output += line + "\n";
        }
    }
    recording.rest = output;
    return recording;
}

std::string FormatRecording(const Recording& recording) {
    std::string text = "$ " + recording.command + "\n";
    for (const Recording::Step& step : recording.steps)
        text += step.output + " " + step.answer + "\n";
    return text + recording.rest;
}

// Output as documents show it: without colours, trailing blanks and redrawn prompts, and with X for
// the random letters in the name of the demo's directory.
std::string AsDocumented(std::string_view bytes) {
    std::string text = AsSeen(bytes);
    text = Replace(text, " /[^\\n]*/morvane-demo\\.[A-Za-z0-9]{6}", " /tmp/morvane-demo.XXXXXX");
    text = Replace(text, "Vantor(/[^\\n]*)? [>?] \\n", "");
    return Replace(text, "[ \\t]+(?=\\n|$)", "");
}

// Whether the last line is a prompt.
bool EndsInPrompt(const std::string& documented) {
    static const std::regex prompt("Vantor(/.*)? [>?]");
    return std::regex_match(documented.substr(documented.rfind('\n') + 1), prompt);
}

// The same for actual output; its end suffices.
bool IsAtPrompt(std::string_view bytes) {
    constexpr std::size_t kEnd = 200;
    return EndsInPrompt(AsDocumented(bytes.substr(bytes.size() - std::min(bytes.size(), kEnd))));
}

bool IsRecording() {
    return std::getenv("MORVANE_RECORD_TRANSCRIPTS") != nullptr;
}

// Delays for slow machines: an announcement must not precede the reply, nor a transfer start before
// the tool has read its properties.
std::string Delays() {
    return " --announce-delay=" + std::to_string(Stretched(Duration(500)).count()) +
           " --start-delay=" + std::to_string(Stretched(Duration(1000)).count());
}

/// Types the answers of a transcript at its prompts. The parameter is the README, which is played
/// on a terminal, or the keys of an example, which are read from a pipe.
class Transcripts : public testing::TestWithParam<std::string> {
  protected:
    bool IsReadme() const { return GetParam() == kReadme; }

    std::string Name() const {
        return IsReadme() ? kReadme : Replace(GetParam(), "\\.keys$", ".transcript");
    }

    Recording Read() const {
        const std::string text = ReadSource(Name());
        return ParseRecording(IsReadme() ? FencedBlock(text, kReadmeBlock) : text);
    }

    /// The command and the answers, without output.
    Recording Outline() const {
        if (IsReadme()) return Read();
        Recording recording;
        recording.command = "scripts/demo < " + GetParam();
        for (const std::string& key : FindAll(ReadSource(GetParam()), "(.*)\n"))
            recording.steps.push_back({"", key});
        return recording;
    }

    void Write(const Recording& recording) const {
        const std::string text = FormatRecording(recording);
        WriteSource(Name(), IsReadme() ? ReplaceFencedBlock(ReadSource(kReadme), kReadmeBlock, text)
                                       : text);
    }

    /// Calls `take` with the echo of the previous answer and the output up to the next one.
    template <typename Take>
    void Play(Recording& recording, const std::string& options, Take take) {
        const std::string command = recording.command.substr(0, recording.command.find(" <"));
        const Wiring wiring = IsReadme() ? Wiring::kInteractiveTerminal : Wiring::kPipes;
        console_.emplace(tree_.Running(command + options, wiring));
        std::string echo;
        for (Recording::Step& step : recording.steps) {
            take(echo, step.output);
            console_->Type(step.answer);
            if (IsReadme()) echo = step.answer + "\n";
        }
        console_->ExpectExit(0, Console::Rest::kIgnored);
        take(echo, recording.rest);
    }

    // The order of messages of the two threads is undefined at the start.
    void Compare(const std::string& expected, bool in_any_order) {
        const auto lines = [in_any_order](const std::string& text) {
            std::vector<std::string> all = FindAll(text + "\n", "(.*)\n");
            if (in_any_order) std::sort(all.begin(), all.end());
            return all;
        };
        const auto is_expected = [&](std::string_view bytes) {
            return (IsAtPrompt(bytes) || !EndsInPrompt(expected)) &&
                   lines(AsDocumented(bytes)) == lines(expected);
        };
        if (console_->TakeOutputIf(is_expected)) return;
        EXPECT_EQ(lines(expected), lines(AsDocumented(console_->Unconsumed())));
        FailTest(Here::Now(), Name() + " differs from the output.");
    }

    // Waits until the output ends with a prompt and does not change for a while.
    std::string Record() {
        std::string before;
        std::string now;
        do {
            before = console_->Unconsumed();
            std::this_thread::sleep_for(Stretched(Duration(1000)));
            now = console_->Unconsumed();
        } while (now != before || !(IsAtPrompt(now) || console_->HasEnded()));
        console_->TakeOutputIf([](std::string_view) { return true; });
        return AsDocumented(now);
    }

    void TearDown() override {
        if (!console_) return;
        if (HasFailure()) std::cout << console_->FailureReport();
        console_->Finish();
    }

  private:
    ScriptTree tree_;
    std::optional<Console> console_;
};

TEST_P(Transcripts, MatchTheOutput) {
    Recording recording = IsRecording() ? Outline() : Read();
    if (IsRecording()) {
        Play(recording, "", [this](const std::string& echo, std::string& output) {
            output = Record().substr(echo.size());
        });
        return Write(recording);
    }
    bool is_start = true;
    Play(recording, Delays(), [&](const std::string& echo, const std::string& output) {
        Compare(echo + output, is_start);
        is_start = false;
    });
}

TEST_P(Transcripts, ContainTheirKeys) {
    const Recording outline = Outline();
    const Recording recording = Read();
    EXPECT_EQ(recording.command, outline.command);
    ASSERT_EQ(recording.steps.size(), outline.steps.size());
    for (std::size_t i = 0; i < recording.steps.size(); ++i)
        EXPECT_EQ(recording.steps[i].answer, outline.steps[i].answer) << "answer " << i;
}

INSTANTIATE_TEST_SUITE_P(Examples, Transcripts,
                         testing::ValuesIn(FindSources("^examples/.*\\.keys$")),
                         [](const auto& keys) { return AsTestName(keys.param); });
INSTANTIATE_TEST_SUITE_P(Readme, Transcripts, testing::Values(kReadme),
                         [](const auto&) { return std::string(kReadmeBlock); });

}  // namespace
}  // namespace morvane_test
