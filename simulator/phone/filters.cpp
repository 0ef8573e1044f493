#include "simulator/phone/filters.h"

#include "interfaces/glib_ptr.h"
#include "simulator/phone/refusal.h"

#include <array>
#include <cstring>
#include <optional>

namespace simulator {
namespace {

using morvane::VariantPtr;

template <typename Value>
struct Word {
    const char* text;
    Value value;
};

constexpr std::array<Word<VcardFormat>, 2> kFormats = {
    {{"vcard21", VcardFormat::kVcard21}, {"vcard30", VcardFormat::kVcard30}}};
constexpr std::array<Word<Order>, 3> kOrders = {{{"indexed", Order::kIndexed},
                                                 {"alphanumeric", Order::kAlphanumeric},
                                                 {"phonetic", Order::kPhonetic}}};
constexpr std::array<Word<SearchField>, 3> kSearchFields = {{{"name", SearchField::kName},
                                                             {"number", SearchField::kNumber},
                                                             {"sound", SearchField::kSound}}};

template <typename Table>
auto Lookup(const Table& table, const char* what, const std::string& text) {
    for (const auto& word : table) {
        if (text == word.text) {
            return word.value;
        }
    }
    throw Refusal(kInvalidArguments, std::string("Unknown ") + what + ": " + text);
}

FieldSet ParseFields(GVariant* names) {
    FieldSet set;
    GVariantIter iterator;
    const gchar* name = nullptr;
    g_variant_iter_init(&iterator, names);
    while (g_variant_iter_next(&iterator, "&s", &name) != FALSE) {
        const std::optional<Field> field = FindField(name);
        if (!field) {
            throw Refusal(kInvalidArguments, std::string("Unknown field: ") + name);
        }
        set.set(static_cast<std::size_t>(*field));
    }
    return set;
}

constexpr unsigned Bit(FilteredCall call) {
    return 1U << static_cast<unsigned>(call);
}
constexpr unsigned kPullAll = Bit(FilteredCall::kPullAll);
constexpr unsigned kPull = Bit(FilteredCall::kPull);
constexpr unsigned kList = Bit(FilteredCall::kList);
constexpr unsigned kSize = Bit(FilteredCall::kSize);

struct FilterRow {
    const char* key;
    const char* type;
    unsigned calls;
    void (*apply)(Filters& filters, GVariant* value);
};

constexpr std::array<FilterRow, 8> kFilters = {{
    {"Format", "s", kPullAll | kPull,
     [](Filters& filters, GVariant* value) {
         filters.format = Lookup(kFormats, "format", g_variant_get_string(value, nullptr));
     }},
    {"Order", "s", kList,
     [](Filters& filters, GVariant* value) {
         filters.order = Lookup(kOrders, "order", g_variant_get_string(value, nullptr));
     }},
    {"MaxCount", "q", kPullAll | kList,
     [](Filters& filters, GVariant* value) { filters.max_count = g_variant_get_uint16(value); }},
    {"Offset", "q", kPullAll | kList,
     [](Filters& filters, GVariant* value) { filters.offset = g_variant_get_uint16(value); }},
    {"ResetNewMissedCalls", "b", kPullAll | kList | kSize,
     [](Filters& filters, GVariant* value) {
         filters.reset_new_missed_calls = g_variant_get_boolean(value) != FALSE;
     }},
    {"Fields", "as", kPullAll | kPull,
     [](Filters& filters, GVariant* value) { filters.fields = ParseFields(value); }},
    {"FilterAll", "as", kPullAll | kList | kSize,
     [](Filters& filters, GVariant* value) { filters.all = ParseFields(value); }},
    {"FilterAny", "as", kPullAll | kList | kSize,
     [](Filters& filters, GVariant* value) { filters.any = ParseFields(value); }},
}};

const FilterRow& FindRow(const char* key, FilteredCall call) {
    for (const FilterRow& row : kFilters) {
        if (std::strcmp(row.key, key) != 0) {
            continue;
        }
        if ((row.calls & Bit(call)) != 0) {
            return row;
        }
        throw Refusal(kInvalidArguments, std::string("Filter not allowed here: ") + key);
    }
    throw Refusal(kInvalidArguments, std::string("Unknown filter: ") + key);
}

void Apply(Filters& filters, const FilterRow& row, GVariant* value) {
    if (g_variant_is_of_type(value, G_VARIANT_TYPE(row.type)) == FALSE) {
        throw Refusal(kInvalidArguments, std::string("Filter ") + row.key + " is of type " +
                                             g_variant_get_type_string(value) + ", not " +
                                             row.type);
    }
    row.apply(filters, value);
}

}  // namespace

Filters ParseFilters(GVariant* dictionary, FilteredCall call) {
    Filters filters;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary);
    while (const VariantPtr entry{g_variant_iter_next_value(&iterator)}) {
        const gchar* key = nullptr;
        VariantPtr value;
        g_variant_get(entry.get(), "{&sv}", &key, static_cast<GVariant**>(morvane::Out(value)));
        Apply(filters, FindRow(key, call), value.get());
    }
    return filters;
}

SearchField ParseSearchField(const std::string& name) {
    return Lookup(kSearchFields, "search field", name);
}

}  // namespace simulator
