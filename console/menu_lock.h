#pragma once

#include <mutex>

namespace morvane {

/// The lock on the registry mutex that is passed from menu to menu: locked, except while the
/// operator is asked. Not tracked by clang's thread-safety analysis (console/mutex.h).
using MenuLock = std::unique_lock<std::mutex>;

/// Passes the lock to a call, which may unlock it; it is locked again when the call returns or
/// throws.
inline MenuLock&& Lend(MenuLock& lock) {
    return static_cast<MenuLock&&>(lock);
}

}  // namespace morvane
