#pragma once

#include "simulator/phone/card.h"

#include <string>

namespace simulator {

enum class VcardFormat { kVcard21, kVcard30 };

/// The card with the given properties and those that its format requires; an empty set selects all.
/// Lines end in CR LF.
std::string WriteVcard(const Card& card, VcardFormat format, const FieldSet& fields = FieldSet());

/// Folds a line (without its end) into parts of at most 75 bytes without splitting UTF-8
/// characters; continuation lines begin with a blank.
std::string FoldLine(const std::string& line);

/// Quoted-printable, in lines of at most 76 characters; the first line already contains `used`
/// characters.
std::string QuotedPrintable(const std::string& text, std::size_t used);

/// The components as vCard 3.0 and 2.1 escape them, between ";".
std::string EscapeVcard30(const std::vector<std::string>& components);
std::string EscapeVcard21(const std::vector<std::string>& components);

}  // namespace simulator
