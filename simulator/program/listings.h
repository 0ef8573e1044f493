#pragma once

#include "simulator/daemon.h"

#include <string>

namespace simulator {

// What commands and the log print: one line each, or one that says that there is nothing.
std::string ListPhones(const Daemon& daemon);
std::string ListSessions(const Daemon& daemon);
std::string ListTransfers(const Daemon& daemon);
std::string ListCalls(const Daemon& daemon);

/// A call and what was answered to it; long values are cut.
std::string LogLine(const Answer& answer);

}  // namespace simulator
