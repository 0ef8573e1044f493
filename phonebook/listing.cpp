#include "phonebook/listing.h"

#include "console/console_output.h"
#include "console/frames.h"
#include "interfaces/glib_ptr.h"

namespace morvane {

void PrintListing(GVariant* listing) {
    PrintHeading("vCard Listing");
    GVariantIter iterator;
    g_variant_iter_init(&iterator, listing);
    // Without a format string: parsing it for each vCard takes as long as printing the vCard.
    while (const VariantPtr vcard{g_variant_iter_next_value(&iterator)}) {
        const VariantPtr handle(g_variant_get_child_value(vcard.get(), 0));
        const VariantPtr name(g_variant_get_child_value(vcard.get(), 1));
        PROXY_Print(kNormal, " %s\t%s\n", g_variant_get_string(handle.get(), nullptr),
                    g_variant_get_string(name.get(), nullptr));
    }
}

void PrintFilterFields(const std::vector<std::string>& fields) {
    PrintHeading("Filter Fields");
    for (const std::string& field : fields) {
        PROXY_Print(kNormal, " %s\n", field.c_str());
    }
}

}  // namespace morvane
