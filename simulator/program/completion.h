#pragma once

#include "simulator/daemon.h"
#include "simulator/program/line_editor.h"

#include <string>

namespace simulator {

/// Completions of the last word in `typed`: a command's name, or an argument of a kind with known
/// values. Ignores letter case.
Completion CompleteCommand(Daemon& daemon, const std::string& typed);

}  // namespace simulator
