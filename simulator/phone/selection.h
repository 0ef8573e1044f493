#pragma once

#include "simulator/phone/filters.h"
#include "simulator/phone/phone.h"

#include <string>
#include <vector>

namespace simulator {

/// Whether the field contains the value, ignoring letter case. Compares only the digits of numbers.
/// An empty value matches every field.
bool Matches(const Entry& entry, SearchField field, const std::string& value);

using Selected = std::vector<const Entry*>;

/// Whether the card has the properties that the filters name.
bool IsSelected(const Entry& entry, const Filters& filters);

/// The entries that the filters select, in their order, the owner's card first. The first `offset`
/// of them are omitted, and at most `max_count` are returned.
Selected SelectEntries(const Phonebook& book, const Filters& filters);
/// The same for the entries that match a search.
Selected SearchEntries(const Phonebook& book, const Filters& filters, SearchField field,
                       const std::string& value);

/// "1A.vcf"
std::string HandleName(const Entry& entry);

/// The entry with a handle ("1A.vcf", either case) or a unique id ("X-BT-UID:" and 32 digits).
/// Throws `Refusal` if the name is malformed or the entry does not exist.
const Entry& FindEntry(const Phonebook& book, const std::string& name);

}  // namespace simulator
