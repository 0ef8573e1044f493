#pragma once

#include "simulator/daemon.h"
#include "simulator/program/line_editor.h"

#include <string>

namespace simulator {

/// The words that the last one in `typed` can become: names of commands, then arguments by their
/// kind. Letter case is ignored.
Completion CompleteCommand(Daemon& daemon, const std::string& typed);

}  // namespace simulator
