#pragma once

namespace morvane {

/// The daemon's name on the bus; an instance of it appends "." and its own name.
inline constexpr const char* kDefaultBusName = "com.veltrisonix";

}  // namespace morvane
