#pragma once

#include "interfaces/glib_ptr.h"

#include <glib.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace simulator {

/// A null-terminated array of copies.
morvane::TextArrayPtr ToTextArray(const std::vector<std::string>& words);

/// A child process to start. It gets its program from PATH.
struct Spawn {
    std::vector<std::string> words;  ///< the program's name or path first
    GSpawnFlags flags;               ///< in addition to those for PATH and waitpid()
    gchar** environment;             ///< null: that of this process
    int output;                      ///< descriptor for standard output; -1: as `flags` specify
    int errors;                      ///< the same for standard error
    GSpawnChildSetupFunc prepare;  ///< runs in the child before exec; async-signal-safe calls only
    gpointer data;                 ///< for `prepare`
};

/// Returns the process id, for waitpid(); 0 and the error if the program cannot be executed.
pid_t Start(const Spawn& spawn, morvane::ErrorPtr& error);

}  // namespace simulator
