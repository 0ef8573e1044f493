#pragma once

#include "play/pattern.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace play {

using Duration = std::chrono::milliseconds;
/// How long a line is awaited without any directive or option.
constexpr Duration kDefaultLimit(10000);
constexpr std::chrono::hours kLongestLimit(24);

/// Reads "10s", "500ms", "2min" or, in seconds, "10". Returns nothing for other texts, and for less
/// than 1 ms or more than a day.
std::optional<Duration> ParseDuration(std::string_view text);
/// "10 s" or "500 ms".
std::string Describe(Duration duration);

// Lines of a file are counted from 0 here, and from 1 in messages.

struct PatternLine {
    std::size_t line;
    Pattern pattern;
};

/// A part of the output that is awaited.
struct Element {
    enum class Kind { kLine, kAnyLines, kAnyOrder };

    Kind kind;
    std::size_t begin;  ///< first line in the file
    std::size_t end;    ///< line after the last one
    std::vector<PatternLine> lines;
    std::optional<Duration> limit;
    /// For kAnyOrder: the line of "...", which allows other lines before and between these. An
    /// element of kind kAnyLines follows, which allows other lines after these.
    std::optional<std::size_t> any_lines = std::nullopt;
};

/// Expected output and the action that follows it.
struct Step {
    enum class Action { kType, kTell, kEnd };

    std::size_t begin = 0;  ///< first line of the output in the file
    std::vector<Element> output;
    Action action = Action::kEnd;
    std::size_t line = 0;  ///< line of the action
    std::string prompt;    ///< the prompt before the answer or command; may be empty
    std::string text;      ///< the answer as written, or the command
    std::optional<Duration> limit;
};

/// How the tool ends.
struct Ending {
    bool by_signal = false;
    int number = 0;  ///< the signal or the exit status

    bool operator==(const Ending& other) const {
        return by_signal == other.by_signal && number == other.number;
    }
};
/// As in "% exit": "3" or "signal 15".
std::string Write(const Ending& ending);

struct SessionFile {
    std::string name;
    std::vector<std::string> lines;
    std::vector<std::string> arguments;
    std::vector<std::string> needs;
    std::vector<Pattern> ignored;  ///< output that is not compared
    std::optional<Duration> limit;
    Ending ending;
    std::vector<Step> steps;  ///< only the last one has the action kEnd
};

/// Throws std::runtime_error with the file's name, the line and the reason.
SessionFile ParseSession(const std::string& name, std::string_view text);

}  // namespace play
