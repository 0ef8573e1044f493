#pragma once

#include "interfaces/glib_ptr.h"
#include "simulator/daemon.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace simulator {

/// An argument of a command.
struct Word {
    std::string value;  ///< the resolved value, such as a full object path
    std::string label;  ///< a short form for answers, such as "session0"
};
using Words = std::vector<Word>;

/// Reads a command's arguments from the rest of its line. `arguments` are the names of their kinds,
/// separated by blanks, optional ones in brackets; `usage` begins with the name of the command. An
/// argument that contains blanks is quoted ("), unless it is the last. Throws `CommandError`.
Words ReadArguments(Daemon& daemon, const std::string& usage, const std::string& arguments,
                    bool insists, std::istringstream& line);

/// The possible values of an argument of this kind; empty if they are not limited. `earlier` are
/// the arguments before it; `typed` is its beginning, which selects the folder of file names.
std::vector<std::string> KnownArguments(Daemon& daemon, const std::string& kind,
                                        const std::vector<std::string>& earlier,
                                        const std::string& typed);

/// The kinds in `arguments`, without brackets.
std::vector<std::string> KindsIn(const std::string& arguments);

// For arguments that were checked when they were read.
morvane::VariantPtr ParseValue(const std::string& text);
std::uint64_t ParseNumber(const std::string& text);

}  // namespace simulator
