#include "simulator/program/commands.h"

#include "simulator/program/command_table.h"
#include "simulator/program/listings.h"

#include <sstream>
#include <stdexcept>

namespace simulator {
namespace {

/// Replaces each kind in braces with the label of its argument.
std::string Fill(std::string text, const Command& command, const Words& words) {
    const std::vector<std::string> kinds = KindsIn(command.arguments);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string placeholder = "{" + kinds[i] + "}";
        const std::size_t found = text.find(placeholder);
        if (found != std::string::npos) {
            text.replace(found, placeholder.size(), words[i].label);
        }
    }
    return text;
}

std::string Acknowledge(const Command& command, const Words& words, bool changed) {
    if (!changed) {
        return Fill(command.unchanged, command, words) + "\n";
    }
    const std::string shown = command.shown;
    return Fill(command.answer, command, words) +
           (shown.empty() || shown == kAtOnce ? "" : ": shown " + shown) + "\n";
}

Outcome Try(const Command& command, Commands& commands, const Words& words) {
    try {
        return command.execute(commands, words);
    } catch (const CommandError&) {
        throw;
    } catch (const std::invalid_argument& failure) {
        throw Invalid(failure.what());
    } catch (const std::exception& failure) {
        throw CommandError(CommandErrorKind::kOtherFailure, failure.what());
    }
}

}  // namespace

std::string Commands::Execute(const std::string& line) {
    if (g_utf8_validate(line.c_str(), static_cast<gssize>(line.size()), nullptr) == FALSE) {
        throw Invalid("The command is not in UTF-8");
    }
    std::istringstream stream(line);
    std::string name;
    if (!(stream >> name) || name.front() == '#') {
        return {};
    }
    bool insists = false;
    const Command& command = FindCommand(name, insists);
    const Words words =
        ReadArguments(daemon_, UsageOf(command), command.arguments, insists, stream);
    const Outcome outcome = Try(command, *this, words);
    const auto* const text = std::get_if<std::string>(&outcome);
    return text != nullptr ? *text : Acknowledge(command, words, std::get<bool>(outcome));
}

bool Commands::ShowCalls(bool show) {
    if (!log_) {
        throw CommandError(CommandErrorKind::kOtherFailure, "There is nowhere to show calls");
    }
    const bool changed = show != static_cast<bool>(calls_);
    if (!show) {
        calls_.reset();
    } else if (changed) {
        calls_ = daemon_.OnAnswer([this](const Answer& answer) { log_(LogLine(answer)); });
    }
    return changed;
}

}  // namespace simulator
