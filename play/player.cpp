#include "play/player.h"

#include "play/text.h"

#include <algorithm>
#include <utility>

namespace play {
namespace {

constexpr Duration kSilence(500);  // output that differs is complete after this pause
constexpr Duration kSignalHandling(500);
constexpr std::size_t kMostBytes = std::size_t{16} << 20U;
constexpr std::size_t kMostOfUnfinished = 1000;
constexpr std::size_t kMostLinesListed = 15;
constexpr std::size_t kMostBytesAfterDifference = std::size_t{64} << 10U;

std::vector<std::string> Join(std::vector<std::string> words,
                              const std::vector<std::string>& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

}  // namespace

Player::Player(const SessionFile& file, const PlayOptions& options, Signals& signals)
    : file_(file),
      options_(options),
      signals_(signals),
      program_(Join(options.command, file.arguments), {}, signals),
      edits_(file.lines) {}

std::string Player::Play() {
    for (const Step& step : file_.steps) {
        options_.progress(step.line);
        if (!PlayStep(step)) {
            End();
            break;
        }
    }
    if (report_.empty()) {
        CheckEnding();
    }
    return report_;
}

void Player::End() {
    program_.End();
    if (program_.EndSignal() != 0) {
        report_ += options_.command.front() + " did not end with its input and was ended by " +
                   (program_.EndSignal() == SIGHUP ? "SIGHUP" : "SIGKILL") + "\n";
    }
}

// Returns whether the next step can be played.
bool Player::PlayStep(const Step& step) {
    Outcome outcome = Await(step);
    if (outcome != Outcome::kReached) {
        Settle(step, outcome);
        RecordDifference(step);
        const bool can_go_on = step.action == Step::Action::kEnd
                                   ? has_ended_
                                   : !has_ended_ && !display_.Prompt().empty();
        if (!options_.update || !can_go_on || outcome == Outcome::kFlooded) {
            Report(step, outcome);
            if (options_.update) {
                report_ += Place(step.line) + "cannot be played on and is not updated\n";
            }
            return false;
        }
    }
    Act(step);
    return true;
}

void Player::Act(const Step& step) {
    if (step.action == Step::Action::kTell) {
        Tell(step);
    } else if (step.action == Step::Action::kType) {
        Type(ParseAnswer(step.text), Limit(step));
        received_ = 0;
    }
}

void Player::Type(const Answer& answer, Duration limit) {
    display_.ExpectEcho(answer.echo, answer.keys.back() == '\n');
    const std::string_view keys = answer.keys;
    const std::string_view echo = answer.echo;
    std::size_t typed = 0;
    for (const Answer::Pause& pause : answer.pauses) {
        const Clock::time_point deadline = Clock::now() + limit;
        program_.Type(keys.substr(typed, pause.keys - typed), deadline);
        AwaitEcho(echo.substr(0, pause.echo), deadline);
        if (pause.follows_signal) {
            AwaitHandling();
        }
        typed = pause.keys;
    }
    program_.Type(keys.substr(typed), Clock::now() + limit);
}

// A missing echo is reported later, as a difference.
void Player::AwaitEcho(std::string_view echo, Clock::time_point deadline) {
    const auto is_displayed = [&] {
        const std::string_view line = display_.Unfinished();
        return line.size() >= echo.size() && line.substr(line.size() - echo.size()) == echo;
    };
    while (!is_displayed() && !has_ended_ && Clock::now() < deadline) {
        Receive(deadline);
    }
}

// Nothing is displayed when a signal has been handled.
void Player::AwaitHandling() {
    const Clock::time_point deadline = Clock::now() + kSignalHandling;
    while (!has_ended_ && Clock::now() < deadline) {
        Receive(deadline);
    }
}

void Player::Tell(const Step& step) {
    const Clock::time_point deadline = Clock::now() + Limit(step);
    const std::string what = Place(step.line) + "the simulator was not told " + Quoted(step.text);
    std::string output;
    try {
        Program simulator({options_.simulator, "--tell", step.text}, {}, signals_);
        Program::Event event = Program::Event::kOutput;
        while (event == Program::Event::kOutput && output.size() < kMostBytesAfterDifference) {
            event = simulator.Wait(deadline, output);
        }
        if (event == Program::Event::kEnd && simulator.HowEnded() == Ending{}) {
            return;
        }
        output = options_.simulator + " " + simulator.Describe() + "\n" + output;
    } catch (const CannotRun& error) {
        output = error.what();
    }
    output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
    throw CannotRun(what + ": " + output);
}

Program::Event Player::Receive(Clock::time_point deadline) {
    std::string output;
    const Program::Event event = program_.Wait(deadline, output);
    received_ += output.size();
    display_.Feed(output);
    if (event == Program::Event::kEnd) {
        has_ended_ = true;
        display_.End();
    }
    for (DisplayedLine& line : display_.TakeLines()) {
        received_ += sizeof line;
        if (!IsIgnored(line)) {
            pending_.push_back(std::move(line));
        }
    }
    return event;
}

bool Player::IsIgnored(const DisplayedLine& line) const {
    return line.prompt.empty() &&
           std::any_of(file_.ignored.begin(), file_.ignored.end(),
                       [&line](const Pattern& pattern) { return pattern.Matches(line.text); });
}

// Returns whether the step's output is complete or differs. Later lines belong to the next step.
bool Player::MatchLines(const Step& step) {
    const bool needs_no_prompt = step.action == Step::Action::kTell && step.prompt.empty();
    auto line = pending_.begin();
    while (line != pending_.end() && matcher_->IsViable() &&
           !(needs_no_prompt && matcher_->IsComplete())) {
        if (line->prompt.empty()) {
            matcher_->Add(line->text);
        }
        ++line;
    }
    pending_.erase(pending_.begin(), line);
    return !matcher_->IsViable() || IsReached(step);
}

bool Player::IsReached(const Step& step) const {
    const bool waits = step.action == Step::Action::kEnd
                           ? has_ended_
                           : step.prompt.empty() || display_.Prompt() == step.prompt;
    return matcher_->IsComplete() && waits;
}

Duration Player::Limit(const Step& step) const {
    const std::size_t awaited = matcher_->Awaited();
    const std::optional<Duration> own =
        awaited < step.output.size() ? step.output[awaited].limit : step.limit;
    return own.value_or(options_.limit.value_or(file_.limit.value_or(kDefaultLimit)));
}

Player::Outcome Player::Await(const Step& step) {
    matcher_.emplace(step.output);
    std::size_t awaited = matcher_->Awaited();
    Clock::time_point deadline = Clock::now() + Limit(step);
    while (!MatchLines(step)) {
        if (has_ended_) {
            return Outcome::kEnded;
        }
        if (received_ > kMostBytes) {
            return Outcome::kFlooded;
        }
        if (matcher_->Awaited() > awaited) {
            awaited = matcher_->Awaited();
            deadline = Clock::now() + Limit(step);
        }
        if (Clock::now() >= deadline) {
            return Outcome::kTimedOut;
        }
        Receive(deadline);
    }
    return matcher_->IsViable() ? Outcome::kReached : Outcome::kDiffers;
}

// Receives the output up to the next prompt or the end, for the report or the update.
void Player::Settle(const Step& step, Outcome outcome) {
    const Clock::time_point deadline = Clock::now() + Limit(step);
    const std::size_t most = options_.update ? kMostBytes : received_ + kMostBytesAfterDifference;
    Program::Event event = Program::Event::kOutput;
    while (event == Program::Event::kOutput && received_ < most && Clock::now() < deadline) {
        const bool may_be_complete = outcome == Outcome::kTimedOut || !display_.Prompt().empty();
        event = Receive(may_be_complete ? Clock::now() + kSilence : deadline);
    }
    for (const DisplayedLine& line : std::exchange(pending_, {})) {
        if (line.prompt.empty()) {
            matcher_->Add(line.text);
        }
    }
}

// The lines of this step, including the last one if it is not finished.
std::vector<std::string> Player::Displayed() const {
    std::vector<std::string> lines = matcher_->Lines();
    if (display_.Prompt().empty() && !display_.Unfinished().empty() &&
        !display_.IsAnswerUnfinished()) {
        lines.push_back(display_.Unfinished().substr(0, kMostOfUnfinished));
    }
    return lines;
}

void Player::RecordDifference(const Step& step) {
    const std::string prompt = display_.Prompt();
    const bool other_prompt = !prompt.empty() && prompt != step.prompt;
    Align(step, Displayed(), edits_);
    const bool has_prompt = step.action != Step::Action::kEnd && !step.prompt.empty();
    if (step.action == Step::Action::kType && (other_prompt || prompt.empty())) {
        edits_.Delete(step.line);
    }
    if (other_prompt && (has_prompt || step.action == Step::Action::kEnd)) {
        edits_.Insert(std::min(step.line + 1, file_.lines.size()),
                      prompt + (step.action == Step::Action::kType ? step.text : ""));
    }
}

std::string Player::Place(std::size_t line) const {
    return file_.name + ":" + std::to_string(std::min(line, file_.lines.size() - 1) + 1) + ": ";
}

std::string Player::Awaited(const Step& step) const {
    const std::size_t awaited = matcher_->Awaited();
    if (awaited < step.output.size()) {
        return Quoted(file_.lines[matcher_->AwaitedLine()]);
    }
    return step.action == Step::Action::kEnd ? "the end" : "the prompt " + Quoted(step.prompt);
}

std::string Player::DescribeDifference(const Step& step) const {
    const std::string prompt = display_.Prompt();
    if (!prompt.empty() && prompt != step.prompt && matcher_->IsViable()) {
        return "; displayed is the prompt " + Quoted(prompt);
    }
    return matcher_->Lines().empty() ? "; nothing was displayed"
                                     : "; displayed last: " + Quoted(matcher_->Lines().back());
}

void Player::Report(const Step& step, Outcome outcome) {
    const std::string& name = options_.command.front();
    const std::size_t awaited = matcher_->Awaited();
    const std::size_t line = awaited < step.output.size() ? matcher_->AwaitedLine() : step.line;
    switch (outcome) {
        case Outcome::kReached:
            return;
        case Outcome::kDiffers:
            report_ = file_.name + ":" + edits_.FirstPlace() + ": the output differs";
            break;
        case Outcome::kTimedOut:
            report_ = Place(line) + Awaited(step) + " did not come within " +
                      Describe(Limit(step)) + DescribeDifference(step);
            break;
        case Outcome::kEnded:
            report_ =
                Place(line) + name + " " + program_.Describe() + ", awaited was " + Awaited(step);
            break;
        case Outcome::kFlooded:
            report_ = Place(line) + name + " prints without end\n";
            return;
    }
    report_ += "\n";
    for (const std::string& need : file_.needs) {
        report_ += "needed: " + need + "\n";
    }
    if (!edits_.IsEmpty()) {
        report_ += edits_.Diff(file_.name);
    }
    report_ += ListHidden(step);
}

// The diff contains "..." instead of the lines that it matches, so they are listed separately.
std::string Player::ListHidden(const Step& step) const {
    const std::vector<std::string> lines = Displayed();
    const bool hides = std::any_of(
        step.output.begin(), step.output.end(),
        [](const Element& element) { return element.kind == Element::Kind::kAnyLines; });
    if (!hides || lines.empty()) {
        return "";
    }
    const std::size_t left_out = lines.size() - std::min(lines.size(), kMostLinesListed);
    std::string list = "displayed since the last answer:\n";
    if (left_out > 0) {
        list += "  (" + std::to_string(left_out) + " more lines)\n";
    }
    for (std::size_t i = left_out; i < lines.size(); ++i) {
        list += "  " + lines[i] + "\n";
    }
    return list;
}

void Player::CheckEnding() {
    if (program_.HowEnded() == file_.ending) {
        return;
    }
    report_ = file_.name + ": " + options_.command.front() + " " + program_.Describe() +
              ", expected was " + Write(file_.ending) + "\n";
}

}  // namespace play
