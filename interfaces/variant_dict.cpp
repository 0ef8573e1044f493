#include "interfaces/variant_dict.h"

namespace morvane {

void InsertTexts(GVariantDict* dict, const char* key, const std::vector<std::string>& texts) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& text : texts) {
        g_variant_builder_add(&builder, "s", text.c_str());
    }
    g_variant_dict_insert_value(dict, key, g_variant_builder_end(&builder));
}

}  // namespace morvane
