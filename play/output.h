#pragma once

#include "play/signals.h"

#include <string_view>

namespace play {

/// Writes to standard output, which may be non-blocking. Returns false if that is closed or full.
/// While there is no room and `signals` is not null, its signals are taken: throws Interrupted.
bool WriteOutput(std::string_view bytes, Signals* signals = nullptr);

}  // namespace play
