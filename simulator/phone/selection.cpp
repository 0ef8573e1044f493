#include "simulator/phone/selection.h"

#include "interfaces/glib_ptr.h"
#include "simulator/phone/refusal.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace simulator {
namespace {

using morvane::TextPtr;

constexpr char kUidPrefix[] = "X-BT-UID:";
constexpr char kHandleSuffix[] = ".vcf";
constexpr std::size_t kLongestHandle = 8;

std::string Folded(const std::string& text) {
    return TextPtr(g_utf8_casefold(text.c_str(), static_cast<gssize>(text.size()))).get();
}

std::string Digits(const std::string& number) {
    std::string digits;
    std::copy_if(number.begin(), number.end(), std::back_inserter(digits),
                 [](unsigned char letter) { return std::isdigit(letter) != 0; });
    return digits;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

bool HasNumber(const Entry& entry, const std::string& value) {
    const std::string wanted = Digits(value);
    if (wanted.empty() && !value.empty()) {
        return false;
    }
    return std::any_of(
        entry.card.properties.begin(), entry.card.properties.end(), [&wanted](const Property& one) {
            return one.field == Field::kTel && Contains(Digits(one.components.front()), wanted);
        });
}

bool HasName(const Entry& entry, const std::string& value) {
    const std::string wanted = Folded(value);
    return Contains(Folded(entry.card.ListingName()), wanted) ||
           Contains(Folded(entry.card.Text(Field::kFn)), wanted);
}

/// The sort key. The owner's card, if any, is first in every order.
std::string SortKey(const Entry& entry, Order order) {
    const std::string sound = entry.card.Text(Field::kSound);
    if (order == Order::kPhonetic && !sound.empty()) {
        return Folded(sound);
    }
    return Folded(entry.card.ListingName());
}

void Sort(Selected& entries, Order order) {
    if (order == Order::kIndexed) {
        return;
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [order](const Entry* left, const Entry* right) {
                         if (left->handle == 0 || right->handle == 0) {
                             return left->handle == 0 && right->handle != 0;
                         }
                         return SortKey(*left, order) < SortKey(*right, order);
                     });
}

template <typename Condition>
Selected SelectIf(const Phonebook& book, const Filters& filters, Condition condition) {
    Selected entries;
    for (const Entry& entry : book) {
        if (IsSelected(entry, filters) && condition(entry)) {
            entries.push_back(&entry);
        }
    }
    Sort(entries, filters.order);
    const auto skipped = std::min<std::size_t>(filters.offset, entries.size());
    entries.erase(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(skipped));
    if (entries.size() > filters.max_count) {
        entries.resize(filters.max_count);
    }
    return entries;
}

template <typename Condition>
const Entry& FindIf(const Phonebook& book, const std::string& name, Condition condition) {
    const auto found = std::find_if(book.begin(), book.end(), condition);
    if (found == book.end()) {
        throw Refusal(kDoesNotExist, "No such vCard: " + name);
    }
    return *found;
}

bool IsHexadecimal(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char letter) { return std::isxdigit(letter) != 0; });
}

/// Only digits are valid, although a conversion would also accept "0x1".
std::uint32_t ParseHandle(const std::string& name) {
    const std::size_t suffix = sizeof kHandleSuffix - 1;
    const std::size_t digits = name.size() < suffix ? 0 : name.size() - suffix;
    const bool well_formed = digits >= 1 && digits <= kLongestHandle &&
                             Folded(name.substr(digits)) == kHandleSuffix &&
                             IsHexadecimal(name.substr(0, digits));
    if (!well_formed) {
        throw Refusal(kInvalidArguments, "Malformed vCard handle: " + name);
    }
    return static_cast<std::uint32_t>(std::stoul(name.substr(0, digits), nullptr, 16));
}

}  // namespace

bool Matches(const Entry& entry, SearchField field, const std::string& value) {
    switch (field) {
        case SearchField::kName:
            return HasName(entry, value);
        case SearchField::kNumber:
            return HasNumber(entry, value);
        case SearchField::kSound:
            return Contains(Folded(entry.card.Text(Field::kSound)), Folded(value));
    }
    return false;
}

bool IsSelected(const Entry& entry, const Filters& filters) {
    FieldSet present;
    for (std::size_t bit = 0; bit < kFieldCount; ++bit) {
        present.set(bit, entry.card.Has(static_cast<Field>(bit)));
    }
    return (filters.all & ~present).none() && (filters.any.none() || (filters.any & present).any());
}

Selected SelectEntries(const Phonebook& book, const Filters& filters) {
    return SelectIf(book, filters, [](const Entry&) { return true; });
}

Selected SearchEntries(const Phonebook& book, const Filters& filters, SearchField field,
                       const std::string& value) {
    return SelectIf(book, filters,
                    [&](const Entry& entry) { return Matches(entry, field, value); });
}

std::string HandleName(const Entry& entry) {
    char text[16];
    g_snprintf(text, sizeof text, "%X%s", entry.handle, kHandleSuffix);
    return text;
}

const Entry& FindEntry(const Phonebook& book, const std::string& name) {
    const std::string prefix = kUidPrefix;
    if (name.compare(0, prefix.size(), prefix) == 0) {
        const std::string uid = Folded(name.substr(prefix.size()));
        return FindIf(book, name, [&uid](const Entry& entry) {
            return entry.card.Has(Field::kBtUid) && Folded(entry.card.Text(Field::kBtUid)) == uid;
        });
    }
    const std::uint32_t handle = ParseHandle(name);
    return FindIf(book, name, [handle](const Entry& entry) { return entry.handle == handle; });
}

}  // namespace simulator
