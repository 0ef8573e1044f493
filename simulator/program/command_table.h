#pragma once

#include "simulator/program/arguments.h"

#include <string>
#include <variant>

namespace simulator {

class Commands;

/// The answer, or whether the command changed anything.
using Outcome = std::variant<bool, std::string>;

/// A value of `shown` that answers omit.
inline constexpr char kAtOnce[] = "at once";

/// A command of the console. Answers may contain its arguments' kinds in braces.
struct Command {
    const char* name;
    const char* arguments;  ///< see `ReadArguments`
    const char* help;
    const char* example;
    Outcome (*execute)(Commands& commands, const Words& words);
    // Of a command that changes something:
    const char* answer = "";
    const char* shown = "";      ///< when the tool displays the change
    const char* unchanged = "";  ///< answer if there was nothing to change
};

/// Throws `CommandError`. `insists` is set if an exclamation mark follows the name, which only
/// commands that check names have.
const Command& FindCommand(const std::string& word, bool& insists);
std::vector<std::string> CommandNames();
std::string UsageOf(const Command& command);

}  // namespace simulator
