#pragma once

#include "play/player.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace play {

struct CommandLine {
    enum class Mode { kPlay, kRecord, kType, kHelp, kVersion };

    Mode mode = Mode::kPlay;
    bool tap = false;
    std::vector<std::string> files;
    PlayOptions play;
};

/// Throws std::runtime_error with one line if the command line is invalid.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

std::string HelpText();

}  // namespace play
