#pragma once

namespace morvane {

/// Colour sequences, written before a text. Every message ends with `kNormal`.
inline constexpr const char* kGreen = "\x1b[1;32m";  ///< frames and prompt texts
inline constexpr const char* kRed = "\x1b[1;31m";    ///< prompt markers, errors
inline constexpr const char* kNormal = "\x1b[0m";    ///< entries, information

// Two threads write to the terminal: the menu thread, which displays a prompt and waits, and the
// main thread, which prints notifications. All output uses these four functions. Each is
// thread-safe. Each message is one write(2) under a private mutex, from a buffer on the stack.
// Texts longer than 999 bytes are truncated. A failed write does not throw; the rest of that
// message is dropped.

/// Prints a message. A displayed prompt is left on its line and displayed again below the message,
/// always with the marker of a menu.
int PROXY_Print(const char* colour, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Prints a message as if no prompt were displayed.
int PROXY_PrintNoPrompt(const char* colour, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// Sets the prompt of a menu to the first 100 bytes of `text`. With `show` 1 displays it with the
/// marker " > ". With 0 clears the prompt, with any other value marks it as displayed; neither
/// prints anything.
void PROXY_Prompt(const char* text, int show);

/// The same for the prompt of a value, with the marker " ? ".
void PROXY_Input(const char* text, int show);

}  // namespace morvane
