#pragma once

#include <string>
#include <vector>

// The signatures are those of an existing interface.
// NOLINTBEGIN(google-runtime-int)

namespace morvane {

// Bluetooth UUIDs in their 16-bit, 32-bit and 128-bit forms. The text form has 36 characters,
// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", written in lower case; a 16-bit or 32-bit UUID is
// the first group of the base UUID 00000000-0000-1000-8000-00805f9b34fb. The 128-bit binary form
// has 16 bytes in the order of the text. Callers own the buffers.

/// Size of the text form with its terminator.
inline constexpr unsigned char kUuidTextSize = 37;

/// True if `text` has the text form, in either case.
bool IsUUIDValid(std::string text);

/// Writes the text form of 16 `bytes` (their number is not checked). Returns false and writes
/// nothing if `out_size` is below 37.
bool ConvertUUID128To128Char(char* out, unsigned char out_size, std::vector<unsigned char> bytes);

/// Writes 4 hexadecimal digits and a terminator (5 bytes); returns the terminator's address.
char* ConvertU16ToHex(char* out, unsigned short value);

/// Writes 8 hexadecimal digits and a terminator (9 bytes); returns the terminator's address.
char* ConvertU32ToHex(char* out, unsigned int value);

/// Writes the text form of a 32-bit UUID (37 bytes).
void ConvertUUID32to128Char(char* out, unsigned int uuid32);

unsigned int ConvertUUID16toUUID32(unsigned short uuid16);

/// `text` in lower case.
std::string UUIDToLocalCase(std::string text);

/// The low 16 bits of the first group, or 0 if the rest is not, in lower case, that of the base
/// UUID. Throws std::invalid_argument on non-hexadecimal digits.
unsigned short Convert128CharToUUID16(std::string text);

/// Fills 16 bytes from 36 characters; hyphens are skipped unchecked. False if `out_size` is below
/// 16 or the length is wrong. Throws std::invalid_argument on non-hexadecimal digits.
bool Convert128CharToUUID128(unsigned char* out, unsigned char out_size, std::string text);

}  // namespace morvane

// NOLINTEND(google-runtime-int)
