#pragma once

#include "simulator/phone/card.h"

#include <string>

namespace simulator {

enum class VcardFormat { kVcard21, kVcard30 };

/// The card with the properties asked for and those that its format cannot do without; an empty
/// set asks for all. Lines end in CR LF.
std::string WriteVcard(const Card& card, VcardFormat format, const FieldSet& fields = FieldSet());

/// Breaks a line (without its end) so that no part is longer than 75 bytes and no UTF-8 character
/// is torn; every further part begins with a blank.
std::string FoldLine(const std::string& line);

/// Quoted-printable, in lines of at most 76 characters the first of which already holds
/// `used` characters.
std::string QuotedPrintable(const std::string& text, std::size_t used);

/// The components as vCard 3.0 and 2.1 escape them, between ";".
std::string EscapeVcard30(const std::vector<std::string>& components);
std::string EscapeVcard21(const std::vector<std::string>& components);

}  // namespace simulator
