#pragma once

namespace morvane {

/// Colour sequences, written before a text. Every message ends with `kNormal`.
inline constexpr const char* kGreen = "\x1b[1;32m";  ///< frames and prompt texts
inline constexpr const char* kRed = "\x1b[1;31m";    ///< prompt markers, errors
inline constexpr const char* kNormal = "\x1b[0m";    ///< entries, information

// Two threads write to the terminal: the menu thread, which shows a prompt and waits, and the main
// thread, which reports what the daemon announces. Everything goes through these four functions.
// Each may be called on any thread; each message is one write(2) under one private lock, from a
// buffer on the stack. Texts longer than 999 bytes are cut. Nothing is thrown for a failed write:
// the rest of that message is dropped.

/// Prints a message; a standing prompt is left on its line and drawn again beneath the message,
/// always with the marker of a menu.
int PROXY_Print(const char* colour, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Prints a message as if no prompt stood.
int PROXY_PrintNoPrompt(const char* colour, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// Makes `text` the standing prompt of a menu and, with `show` 1, draws it with the marker " > ".
/// `show` 0 takes the prompt away without drawing, any other marks it as standing without drawing.
/// The first 100 bytes of `text` are kept.
void PROXY_Prompt(const char* text, int show);

/// The same for the prompt of a value, drawn with the marker " ? ".
void PROXY_Input(const char* text, int show);

}  // namespace morvane
