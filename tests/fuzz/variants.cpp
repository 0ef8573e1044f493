#include "fuzz/variants.h"

#include <memory>

namespace morvane_fuzz {
namespace {

using morvane::VariantPtr;

// The parser wants UTF-8 of whoever calls it.
VariantPtr FromText(const std::string& text, const GVariantType* type) {
    if (!IsUtf8(text)) return nullptr;
    return VariantPtr(
        g_variant_parse(type, text.data(), text.data() + text.size(), nullptr, nullptr));
}

VariantPtr FromBytes(const std::string& bytes, const GVariantType* type) {
    auto owned = std::make_unique<std::string>(bytes);
    const std::string& data = *owned;
    const gboolean trusted = FALSE;
    return VariantPtr(g_variant_ref_sink(g_variant_new_from_data(
        type, data.data(), data.size(), trusted,
        [](gpointer text) { delete static_cast<std::string*>(text); }, owned.release())));
}

}  // namespace

VariantPtr ReadVariant(Input& input, const std::string& type_text) {
    const GVariantType* const type = G_VARIANT_TYPE(type_text.c_str());
    switch (input.Byte()) {
        case 't':
            return FromText(input.Rest(), type);
        case 'n':
            return VariantPtr(g_variant_get_normal_form(FromBytes(input.Rest(), type).get()));
        default:
            return FromBytes(input.Rest(), type);
    }
}

VariantPtr ReadVariantOfAnyType(Input& input) {
    const std::string type = input.Line();
    const bool usable = type.find('\0') == std::string::npos &&
                        g_variant_type_string_is_valid(type.c_str()) != FALSE &&
                        g_variant_type_is_definite(G_VARIANT_TYPE(type.c_str())) != FALSE;
    return usable ? ReadVariant(input, type) : nullptr;
}

}  // namespace morvane_fuzz
