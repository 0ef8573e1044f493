#pragma once

#include "simulator/daemon.h"

#include <string>

namespace simulator {

// The output of listing commands and of the log: one line for each item, or one line that reports
// that there is none.
std::string ListPhones(const Daemon& daemon);
std::string ListSessions(const Daemon& daemon);
std::string ListTransfers(const Daemon& daemon);
std::string ListCalls(const Daemon& daemon);

/// A call and its answer; long values are truncated.
std::string LogLine(const Answer& answer);

}  // namespace simulator
