#pragma once

#include "interfaces/glib_ptr.h"

#include <string>

namespace simulator {

/// Throws `std::runtime_error` with one line.
morvane::GlibPtr<GDBusConnection> Connect(const std::string& address);

}  // namespace simulator
