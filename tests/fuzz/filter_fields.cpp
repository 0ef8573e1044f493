#include "fuzz/fuzz.h"
#include "fuzz/variants.h"
#include "interfaces/variant_dict.h"
#include "phonebook/listing.h"
#include "support/captured_output.h"
#include "support/messages.h"

#include <string>
#include <vector>

namespace morvane_fuzz {
namespace {

using Fields = std::vector<std::string>;

Fields FieldsOf(GVariant* list) {
    const morvane::TextArrayPtr texts(g_variant_dup_strv(list, nullptr));
    return Fields(texts.get(), texts.get() + g_strv_length(texts.get()));
}

std::string ExpectedLines(const Fields& fields) {
    std::string lines = morvane_test::Heading("Filter Fields");
    for (const std::string& field : fields) lines += Message(" " + field + "\n");
    return lines;
}

// A key that is set again keeps the last list; the other one stays.
void CheckDictionary(const Fields& fields, const Fields& others) {
    morvane::VariantDict dict;
    morvane::InsertTexts(dict.Get(), "Fields", others);
    morvane::InsertTexts(dict.Get(), "FilterAny", others);
    morvane::InsertTexts(dict.Get(), "Fields", fields);
    const morvane::VariantPtr filters = dict.End();
    RequireEqual(std::string(g_variant_get_type_string(filters.get())), "a{sv}", "a type");
    Require(g_variant_is_normal_form(filters.get()) != FALSE, "filters are in normal form");
    RequireEqual(g_variant_n_children(filters.get()), 2U, "the number of filters");
    for (const auto& [key, expected] : {std::pair{"Fields", fields}, {"FilterAny", others}}) {
        const morvane::VariantPtr list(
            g_variant_lookup_value(filters.get(), key, G_VARIANT_TYPE_STRING_ARRAY));
        Require(list != nullptr, "a filter is a list of texts", key);
        RequireEqual(FieldsOf(list.get()), expected, "the texts of a filter");
    }
}

}  // namespace

void Check(Input input) {
    const morvane::VariantPtr list = ReadVariant(input, "as");
    if (!list) return;
    const Fields fields = FieldsOf(list.get());
    RequireEqual(fields.size(), g_variant_n_children(list.get()), "the number of fields");
    RequireEqual(morvane_test::Printed([&] { morvane::PrintFilterFields(fields); }),
                 ExpectedLines(fields), "the lines of the filter fields");
    CheckDictionary(fields, Fields(fields.begin() + static_cast<std::ptrdiff_t>(fields.size() / 2),
                                   fields.end()));
}

}  // namespace morvane_fuzz
