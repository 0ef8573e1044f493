#include "transfer/initial_properties.h"

#include "fuzz/fuzz.h"
#include "interfaces/glib_ptr.h"
#include "support/captured_output.h"
#include "support/messages.h"

#include <optional>
#include <string>
#include <utility>

namespace morvane_fuzz {
namespace {

using morvane::VariantPtr;

bool IsUtf8(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

// g_variant_parse() requires valid UTF-8.
VariantPtr FromText(const std::string& text, const GVariantType* type) {
    if (!IsUtf8(text)) return nullptr;
    return VariantPtr(
        g_variant_parse(type, text.data(), text.data() + text.size(), nullptr, nullptr));
}

VariantPtr FromBytes(const std::string& bytes, const GVariantType* type) {
    GBytes* const owned = g_bytes_new(bytes.data(), bytes.size());
    VariantPtr value = morvane::Own(g_variant_new_from_bytes(type, owned, FALSE));
    g_bytes_unref(owned);
    return value;
}

// Reads a value of `type` from the rest of the input, whose first byte selects the form: "t" for
// GVariant text, "n" for serialised bytes in normal form, as received from a bus, anything else for
// serialised bytes. Returns null if the value is invalid.
VariantPtr ReadVariant(Input& input, const std::string& type_text) {
    const GVariantType* const type = G_VARIANT_TYPE(type_text.c_str());
    const unsigned char form = input.Byte();
    if (form == 't') return FromText(input.Rest(), type);
    VariantPtr value = FromBytes(input.Rest(), type);
    return form == 'n' ? VariantPtr(g_variant_get_normal_form(value.get())) : std::move(value);
}

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
            expected.lines += morvane_test::Normal(
                (std::string(row.label) + ": " + row.value(value) + "\n").substr(0, 999));
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

// Reads an entry: a line with the key, a line with the type, and the value. Returns null if one is
// invalid.
VariantPtr ReadEntry(Input& input) {
    const std::string key = input.Line();
    const std::string type = input.Line();
    if (!IsUtf8(key) || type.find('\0') != std::string::npos ||
        g_variant_type_string_is_valid(type.c_str()) == FALSE ||
        g_variant_type_is_definite(G_VARIANT_TYPE(type.c_str())) == FALSE)
        return nullptr;
    const VariantPtr value = ReadVariant(input, type);
    if (!value) return nullptr;
    GVariantDict dict;
    g_variant_dict_init(&dict, nullptr);
    g_variant_dict_insert_value(&dict, key.c_str(), value.get());
    return morvane::Own(g_variant_dict_end(&dict));
}

}  // namespace

// "e" and an entry, or a complete dictionary.
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
    RequireEqual(size, expected.size, "the size");
}

}  // namespace morvane_fuzz
