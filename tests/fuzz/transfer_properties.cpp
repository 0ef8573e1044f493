#include "transfer/initial_properties.h"

#include "fuzz/fuzz.h"
#include "fuzz/variants.h"
#include "support/captured_output.h"

#include <string>

namespace morvane_fuzz {
namespace {

using morvane::VariantPtr;

struct Row {
    const char* key;
    const char* label;
    std::string (*value)(GVariant* value);
};

bool Is(GVariant* value, const char* type) {
    return g_variant_is_of_type(value, G_VARIANT_TYPE(type)) != FALSE;
}

std::string Text(GVariant* value) {
    return Is(value, "s") ? g_variant_get_string(value, nullptr) : "Unknown";
}

std::string TextOrPath(GVariant* value) {
    return Is(value, "o") ? g_variant_get_string(value, nullptr) : Text(value);
}

guint64 Number(GVariant* value) {
    return Is(value, "t") ? g_variant_get_uint64(value) : 0;
}

std::string Low32(GVariant* value) {
    return std::to_string(Number(value) % (guint64{1} << 32));
}

constexpr Row kRows[] = {
    {"Status", "Status", Text},
    {"Name", "Object Name", Text},
    {"Filename", "Filename", Text},
    {"Size", "Size", Low32},
    {"Transferred", "Bytes Transferred", Low32},
    {"Session", "Session", TextOrPath},
    {"Type", "MIME type", Text},
};

struct Expected {
    std::string lines;
    std::optional<guint64> size;
};

void AddEntry(const std::string& key, GVariant* value, Expected& expected) {
    for (const Row& row : kRows)
        if (key == row.key)
            expected.lines += Message(std::string(row.label) + ": " + row.value(value) + "\n");
    if (key == "Size") expected.size = Number(value);
}

Expected Model(GVariant* dictionary) {
    Expected expected;
    for (gsize i = 0; i < g_variant_n_children(dictionary); ++i) {
        const VariantPtr entry(g_variant_get_child_value(dictionary, i));
        const VariantPtr key(g_variant_get_child_value(entry.get(), 0));
        const VariantPtr boxed(g_variant_get_child_value(entry.get(), 1));
        const VariantPtr value(g_variant_get_variant(boxed.get()));
        AddEntry(g_variant_get_string(key.get(), nullptr), value.get(), expected);
    }
    return expected;
}

// One entry whose value may have any type.
VariantPtr ReadEntry(Input& input) {
    const std::string key = input.Line();
    const VariantPtr value = ReadVariantOfAnyType(input);
    if (!value || !IsUtf8(key)) return nullptr;
    GVariantDict dict;
    g_variant_dict_init(&dict, nullptr);
    g_variant_dict_insert_value(&dict, key.c_str(), value.get());
    return VariantPtr(g_variant_ref_sink(g_variant_dict_end(&dict)));
}

}  // namespace

// Either "e" and an entry, or a whole dictionary.
void Check(Input input) {
    Input whole = input;
    const VariantPtr dictionary =
        input.Byte() == 'e' ? ReadEntry(input) : ReadVariant(whole, "a{sv}");
    if (!dictionary) return;
    std::optional<guint64> size;
    const std::string lines =
        morvane_test::Printed([&] { size = morvane::PrintProperties(dictionary.get()); });
    const Expected expected = Model(dictionary.get());
    RequireEqual(lines, expected.lines, "the lines of a transfer's properties");
    RequireEqual(size.has_value(), expected.size.has_value(), "whether there is a size");
    RequireEqual(size.value_or(0), expected.size.value_or(0), "the size");
}

}  // namespace morvane_fuzz
