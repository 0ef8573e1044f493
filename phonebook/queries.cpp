#include "console/console_input.h"
#include "console/console_output.h"
#include "console/errors.h"
#include "interfaces/bus_text.h"
#include "interfaces/remote_call.h"
#include "interfaces/variant_dict.h"
#include "phonebook/listing.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"
#include "phonebook/refusal.h"

namespace morvane {
namespace {

constexpr unsigned int kMaxSearchValueLength = 63;

constexpr ChoicePrompt kSearchField = {"/Select Search Field", "Select Search Field",
                                       "Invalid search field selected"};

void PrintSize(const char* label, guint16 size) {
    PROXY_Print(kNormal, "%s %d\n", label, size);
}

}  // namespace

void PhonebookContext::RequireSelection() const {
    if (!phonebook_selected_) {
        throw InvalidValueException("No Phonebook selected");
    }
}

VariantPtr PhonebookContext::AskFilters(SelectFilters select, MenuLock& lock) {
    VariantDict filters;
    (this->*select)(Lend(lock), filters.Get());
    if (PROXY_InputEnded()) {
        throw InputEnded{};
    }
    return filters.End();
}

void PhonebookContext::List(MenuLock&& lock) {
    RequireSelection();
    const VariantPtr filters = AskFilters(&PhonebookContext::SelectListFilters, lock);
    VariantPtr listing;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_list_sync, phonebook_proxy_,
                               filters.get(), Out(listing)));
    PrintListing(listing.get());
}

void PhonebookContext::Search(MenuLock&& lock) {
    RequireSelection();
    const std::string field = SelectSearchField(Lend(lock));
    const std::string value = SetSearchValue(Lend(lock));
    const VariantPtr filters = AskFilters(&PhonebookContext::SelectListFilters, lock);
    VariantPtr listing;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_search_sync, phonebook_proxy_,
                               field.c_str(), value.c_str(), filters.get(), Out(listing)));
    PrintListing(listing.get());
}

std::string PhonebookContext::SelectSearchField(MenuLock&& lock) {
    return Choose(lock, kSearchField, {"name", "number", "sound"});
}

std::string PhonebookContext::SetSearchValue(MenuLock&& lock) {
    return BusText(
        AskText(lock, "/Search Value", "Enter search value string", kMaxSearchValueLength)
            .value_or(""));
}

// The printed text shows which of the three sizes it is.

void PhonebookContext::GetSize() {
    RequireSelection();
    guint16 size = 0;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_get_size_sync, phonebook_proxy_, &size));
    PrintSize("Phonebook Size", size);
}

void PhonebookContext::GetSizePhonebook(MenuLock&& lock) {
    PrintFilteredSize(obex_phonebook_access1_call_get_size_phonebook_sync, "Phone Book Size", lock);
}

void PhonebookContext::GetSizeListing(MenuLock&& lock) {
    PrintFilteredSize(obex_phonebook_access1_call_get_size_listing_sync, "vCard List Size", lock);
}

void PhonebookContext::PrintFilteredSize(SizeCall call, const char* label, MenuLock& lock) {
    RequireSelection();
    const VariantPtr filters = AskFilters(&PhonebookContext::SelectSizeFilters, lock);
    guint16 size = 0;
    RequireAccepted(CallRemote(call, phonebook_proxy_, filters.get(), &size));
    PrintSize(label, size);
}

void PhonebookContext::UpdateVersion() {
    RequireAccepted(CallRemote(obex_phonebook_access1_call_update_version_sync, phonebook_proxy_));
    PROXY_Print(kNormal, "Counters updated\n");
}

void PhonebookContext::ListFilterFields(bool print) {
    TextArrayPtr fields;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_list_filter_fields_sync,
                               phonebook_proxy_, Out(fields)));
    filter_fields_.assign(fields.get(), fields.get() + g_strv_length(fields.get()));
    if (print) {
        PrintFilterFields(filter_fields_);
    }
}

}  // namespace morvane
