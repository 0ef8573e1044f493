#pragma once

#include "simulator/daemon.h"

#include <string>

namespace simulator {

// The output of commands that list, and of the log: one line for each item; if there is none, one
// line that says so.
std::string ListPhones(const Daemon& daemon);
std::string ListSessions(const Daemon& daemon);
std::string ListTransfers(const Daemon& daemon);
std::string ListCalls(const Daemon& daemon);

/// A call and what was answered to it; long values are cut.
std::string LogLine(const Answer& answer);

}  // namespace simulator
