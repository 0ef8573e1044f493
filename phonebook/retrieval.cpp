#include "app/obex_proxy.h"
#include "console/errors.h"
#include "console/frames.h"
#include "interfaces/bus_text.h"
#include "interfaces/remote_call.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"
#include "phonebook/refusal.h"
#include "phonebook/vcard_handle.h"

namespace morvane {
namespace {

constexpr const char* kPhonebookFile = "/tmp/phonebook.vcf";
constexpr const char* kVcardFile = "/tmp/card.vcf";

}  // namespace

void PhonebookContext::PullAll(MenuLock&& lock) {
    RequireSelection();
    const VariantPtr filters = AskFilters(&PhonebookContext::SelectPullAllFilters, lock);
    TextPtr path;
    VariantPtr properties;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_pull_all_sync, phonebook_proxy_,
                               kPhonebookFile, filters.get(), Out(path), Out(properties)));
    AllocTransfer(path.get(), properties.get());
}

void PhonebookContext::Pull(MenuLock&& lock) {
    RequireSelection();
    const std::string name = SelectVcard(Lend(lock));
    const VariantPtr filters = AskFilters(&PhonebookContext::SelectPullFilters, lock);
    // The filter menu returns without an error when the session is lost, and this object with it.
    if (!obexProxy.IsCurrent(this)) {
        throw InvalidObjectException("Phonebook Access Proxy is invalid");
    }
    TextPtr path;
    VariantPtr properties;
    RequireAccepted(CallRemote(obex_phonebook_access1_call_pull_sync, phonebook_proxy_,
                               name.c_str(), kVcardFile, filters.get(), Out(path),
                               Out(properties)));
    AllocTransfer(path.get(), properties.get());
}

std::string PhonebookContext::SelectVcard(MenuLock&& lock) {
    PrintHeading("Enter handle of vCard to download");
    const std::optional<std::string> typed =
        AskText(lock, "/vCard Handle", "", kMaxVcardHandleLength + 1);
    return ReplaceInvalidBytes(VcardName(typed));
}

}  // namespace morvane
