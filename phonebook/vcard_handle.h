#pragma once

#include <optional>
#include <string>

namespace morvane {

/// The longest text that can name a vCard, in bytes. The prompt reads one byte more so that a
/// longer text is refused and not truncated to a valid one.
inline constexpr unsigned int kMaxVcardHandleLength = 41;

/// The object name of the vCard that the operator typed: a unique id ("X-BT-UID:" and 32 bytes)
/// unchanged, a hexadecimal handle with ".vcf" appended. A handle is up to eight characters that
/// strtoul() accepts with base 16, including leading blanks, a sign or "0x". Throws
/// InvalidValueException for anything else, and without an answer.
[[nodiscard]] std::string VcardName(const std::optional<std::string>& answer);

}  // namespace morvane
