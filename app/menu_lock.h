#pragma once

#include <mutex>

namespace morvane {

/// The hold on the registry mutex that is passed from menu to menu: held, except while the operator
/// is asked. Passed on as it is, it is out of the sight of clang's analysis (console/mutex.h).
using MenuLock = std::unique_lock<std::mutex>;

/// Passes the hold down for the length of a call; it is held again when the call returns or throws.
inline MenuLock&& Lend(MenuLock& lock) {
    return static_cast<MenuLock&&>(lock);
}

}  // namespace morvane
