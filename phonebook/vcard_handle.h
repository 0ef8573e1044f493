#pragma once

#include <string>

namespace morvane {

/// The longest text that can name a vCard, in bytes. A reader takes one byte more, so that a text
/// that is too long is refused and not cut to one that is valid.
inline constexpr unsigned int kMaxVcardHandleLength = 41;

/// The name under which the phone knows the vCard that the operator typed: a unique id
/// ("X-BT-UID:" and 32 bytes) as it is, a hexadecimal handle with ".vcf" behind it. Whatever the
/// base-16 conversion takes within eight characters is a handle, also with blanks, a sign or "0x"
/// in front. Throws InvalidValueException for anything else.
[[nodiscard]] std::string VcardName(const std::string& typed);

}  // namespace morvane
