#pragma once

#include "console/menu_lock.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane {

// Prompts of the phone book operations. All run on the menu thread, unlock `lock` while they ask,
// and throw InvalidObjectException if the session was lost meanwhile.

/// A numbered list of which the operator chooses one entry.
struct ChoicePrompt {
    const char* segment;  ///< last part of the prompt path
    const char* title;
    const char* error;  ///< text of the InvalidValueException for any other answer
};

using Choices = std::vector<std::string>;

/// Throws InvalidObjectException unless client and session are valid.
void RequireSession();

/// The answer, truncated to `limit` bytes; see ObexProxy::AskText().
[[nodiscard]] std::optional<std::string> AskText(MenuLock& lock, const char* segment,
                                                 const char* title, unsigned int limit);
/// `kInputLeft` if the operator typed "x" or the input has ended.
[[nodiscard]] unsigned int AskNumber(MenuLock& lock, const char* segment);
[[nodiscard]] std::string Choose(MenuLock& lock, const ChoicePrompt& prompt,
                                 const Choices& choices);

}  // namespace morvane
