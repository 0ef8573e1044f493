#include "phonebook/listing.h"

#include "console/console_output.h"
#include "console/frames.h"

namespace morvane {

void PrintListing(GVariant* listing) {
    PrintHeading("vCard Listing");
    GVariantIter iterator;
    g_variant_iter_init(&iterator, listing);
    const gchar* handle = nullptr;
    const gchar* name = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&s)", &handle, &name) != FALSE) {
        PROXY_Print(kNormal, " %s\t%s\n", handle, name);
    }
}

void PrintFilterFields(const std::vector<std::string>& fields) {
    PrintHeading("Filter Fields");
    for (const std::string& field : fields) {
        PROXY_Print(kNormal, " %s\n", field.c_str());
    }
}

}  // namespace morvane
