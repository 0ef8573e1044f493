#pragma once

#include "simulator/phone/card.h"
#include "simulator/phone/vcard_writer.h"

#include <gio/gio.h>

#include <cstdint>
#include <string>

namespace simulator {

enum class Order { kIndexed, kAlphanumeric, kPhonetic };

/// The filters of a call.
struct Filters {
    VcardFormat format = VcardFormat::kVcard21;
    Order order = Order::kIndexed;
    std::uint16_t max_count = 65535;
    std::uint16_t offset = 0;
    bool reset_new_missed_calls = false;
    FieldSet fields;  ///< properties to send; empty: all
    FieldSet all;     ///< a card must have all of these properties
    FieldSet any;     ///< unless empty, a card must have one of these properties
};

enum class FilteredCall { kPullAll, kPull, kList, kSize };

/// Reads an a{sv}. Throws `Refusal` on a key that is unknown or not allowed in the call, and on an
/// invalid type or value.
Filters ParseFilters(GVariant* dictionary, FilteredCall call);

enum class SearchField { kName, kNumber, kSound };

/// "name", "number" or "sound"; throws `Refusal` for anything else.
SearchField ParseSearchField(const std::string& name);

}  // namespace simulator
