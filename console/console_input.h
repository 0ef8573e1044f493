#pragma once

namespace morvane {

// The operator's answers. Menu thread only. Each function displays its prompt, waits for one line
// of standard input and clears the prompt. `prompt` is the path displayed before the marker.
// Invalid input does not throw.

/// Returned by a number input if the operator typed "x" or the input has ended.
inline constexpr unsigned int kInputLeft = 0xFFFFFFFF;

/// The first non-blank character of a line; after a blank line it asks again. Returns 'q' at the
/// end of the input, also for a last line without a newline.
[[nodiscard]] char PROXY_MenuInput(const char* prompt);

/// A number as the standard streams read it ("12abc" is 12, "-1" wraps around); after anything else
/// it prints an error and asks again. `title`, if not null, is the heading of a box printed first.
[[nodiscard]] unsigned int PROXY_InputUint32(const char* prompt, const char* title);

/// The same in hexadecimal, with or without "0x".
[[nodiscard]] unsigned int PROXY_InputHex(const char* prompt, const char* title);

/// Stores the first `size - 1` bytes of a line and a terminator in `buffer` and returns their
/// count. May truncate inside a UTF-8 character. The end of the input reads as an empty line; a
/// last line without a newline is kept. Returns 0 and does nothing if an argument is null or `size`
/// is 0.
unsigned int PROXY_InputString(const char* prompt, const char* title, char* buffer,
                               unsigned int size);

/// True once standard input has ended or failed: all further answers are 'q', "" or kInputLeft.
[[nodiscard]] bool PROXY_InputEnded();

}  // namespace morvane
