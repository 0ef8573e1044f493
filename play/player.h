#pragma once

#include "play/answer.h"
#include "play/display.h"
#include "play/edits.h"
#include "play/matcher.h"
#include "play/program.h"
#include "play/session_file.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace play {

struct PlayOptions {
    std::vector<std::string> command = {"morvane"};
    std::string simulator = "morvane-simulator";  ///< called with "--tell"
    std::optional<Duration> limit;                ///< replaces the time-out in the file
    bool update = false;
    /// Called with the number of a line before it is played.
    std::function<void(std::size_t line)> progress = [](std::size_t) {};
};

/// Plays one file.
class Player {
  public:
    Player(const SessionFile& file, const PlayOptions& options, Signals& signals);

    /// Returns a report in lines, or an empty text if everything agrees or, with the option
    /// `update`, if the file was played to its end. Throws CannotRun.
    std::string Play();

    /// After Play(): the edits that make the file agree.
    [[nodiscard]] const Edits& Differences() const { return edits_; }

  private:
    enum class Outcome { kReached, kDiffers, kTimedOut, kEnded, kFlooded };

    bool PlayStep(const Step& step);
    void End();
    void Act(const Step& step);
    void Type(const Answer& answer, Duration limit);
    void AwaitEcho(std::string_view echo, Clock::time_point deadline);
    void AwaitHandling();
    void Tell(const Step& step);

    Outcome Await(const Step& step);
    [[nodiscard]] bool IsIgnored(const DisplayedLine& line) const;
    bool MatchLines(const Step& step);
    [[nodiscard]] bool IsReached(const Step& step) const;
    [[nodiscard]] Duration Limit(const Step& step) const;
    Program::Event Receive(Clock::time_point deadline);
    void Settle(const Step& step, Outcome outcome);

    void RecordDifference(const Step& step);
    [[nodiscard]] std::vector<std::string> Displayed() const;
    void Report(const Step& step, Outcome outcome);
    [[nodiscard]] std::string ListHidden(const Step& step) const;
    [[nodiscard]] std::string Awaited(const Step& step) const;
    [[nodiscard]] std::string DescribeDifference(const Step& step) const;
    void CheckEnding();
    [[nodiscard]] std::string Place(std::size_t line) const;

    const SessionFile& file_;
    const PlayOptions& options_;
    Signals& signals_;
    Program program_;
    Display display_;
    std::vector<DisplayedLine> pending_;  // displayed, not yet compared
    std::optional<Matcher> matcher_;
    std::size_t received_ = 0;  // bytes since the last answer; limits memory
    bool has_ended_ = false;
    Edits edits_;
    std::string report_;
};

}  // namespace play
