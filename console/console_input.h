#pragma once

namespace morvane {

// The operator's answers. Only the menu thread calls these; each shows its prompt, waits for one
// whole line of standard input and takes the prompt away again. `prompt` is the path shown before
// the marker. Bad input is never thrown.

/// What a number input returns when the operator left it with "x" or the input has ended.
inline constexpr unsigned int kInputLeft = 0xFFFFFFFF;

/// The first non-blank character of a line; blank lines are asked again. Gives 'q' at the end of
/// the input, also for a last line without its newline.
[[nodiscard]] char PROXY_MenuInput(const char* prompt);

/// A number as the standard streams read it ("12abc" is 12, "-1" wraps round); anything else is
/// reported and asked again. `title`, if not null, heads a box drawn first.
[[nodiscard]] unsigned int PROXY_InputUint32(const char* prompt, const char* title);

/// The same in hexadecimal, with or without "0x".
[[nodiscard]] unsigned int PROXY_InputHex(const char* prompt, const char* title);

/// Stores the first `size - 1` bytes of a line and a terminator in `buffer` and returns their
/// count. The cut may fall inside a UTF-8 character. The end of the input reads as an empty line,
/// but a last line without its newline is kept. With a null argument or no room: does nothing, 0.
unsigned int PROXY_InputString(const char* prompt, const char* title, char* buffer,
                               unsigned int size);

/// True once standard input has ended (or failed): every further answer is the leaving one.
[[nodiscard]] bool PROXY_InputEnded();

}  // namespace morvane
