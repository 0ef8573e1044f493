#include "phonebook/listing.h"

#include "fuzz/fuzz.h"
#include "fuzz/variants.h"
#include "support/captured_output.h"
#include "support/messages.h"

#include <string>

namespace morvane_fuzz {
namespace {

std::string Text(GVariant* tuple, gsize index) {
    const morvane::VariantPtr text(g_variant_get_child_value(tuple, index));
    return g_variant_get_string(text.get(), nullptr);
}

std::string Expected(GVariant* listing) {
    std::string lines = morvane_test::Heading("vCard Listing");
    for (gsize i = 0; i < g_variant_n_children(listing); ++i) {
        const morvane::VariantPtr card(g_variant_get_child_value(listing, i));
        lines += Message(" " + Text(card.get(), 0) + "\t" + Text(card.get(), 1) + "\n");
    }
    return lines;
}

}  // namespace

void Check(Input input) {
    const morvane::VariantPtr listing = ReadVariant(input, "a(ss)");
    if (!listing) return;
    RequireEqual(morvane_test::Printed([&] { morvane::PrintListing(listing.get()); }),
                 Expected(listing.get()), "the lines of a listing");
}

}  // namespace morvane_fuzz
