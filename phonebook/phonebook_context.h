#pragma once

#include "app/menu_lock.h"
#include "interfaces/glib_ptr.h"
#include "transfer/transfer_context.h"

#include "obex-phonebook-access1.h"
#include "obex-session1.h"

#include <memory>
#include <string>
#include <vector>

namespace morvane {

/// One open phone book access session and every operation on it.
///
/// All operations run on the menu thread with the registry mutex held. Those that take the lock ask
/// the operator and release it meanwhile; this object may be destroyed then. After asking they
/// throw InvalidObjectException, before they touch any member, unless the session is still valid.
///
/// Operations throw InvalidValueException for an unusable answer or a missing selection,
/// IapiException for a refused call, ProxyException for a transfer that cannot be reached, and
/// InputEnded when the input ends in a filter menu. Nothing is printed then, and nothing changed
/// unless a line says so.
class PhonebookContext {
  public:
    /// Prints the session's properties and follows them. Throws ProxyException.
    explicit PhonebookContext(const std::string& path);
    PhonebookContext(const PhonebookContext&) = delete;
    PhonebookContext& operator=(const PhonebookContext&) = delete;
    /// Deletes the file that a held transfer has downloaded.
    ~PhonebookContext();

    // Session and properties (phonebook_context.cpp).

    void BuildProxy();
    void GetInitialProperties() const;
    void SessionSubscribe();
    /// The session is connected.
    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] std::string GetPathName() const { return path_; }

    // Selection (selection.cpp).

    /// Has a location and a phone book chosen and selects them. A refused call leaves nothing
    /// selected.
    void Select(MenuLock&& lock);
    [[nodiscard]] std::string SelectLocation(MenuLock&& lock);
    [[nodiscard]] std::string SelectPhonebook(MenuLock&& lock, const std::string& location);

    // Retrieval into the fixed files (retrieval.cpp). A pull replaces the held transfer.

    void PullAll(MenuLock&& lock);
    void Pull(MenuLock&& lock);
    [[nodiscard]] std::string SelectVcard(MenuLock&& lock);

    // Listing, search and size (queries.cpp).

    void List(MenuLock&& lock);
    void Search(MenuLock&& lock);
    void GetSize();
    void GetSizePhonebook(MenuLock&& lock);
    void GetSizeListing(MenuLock&& lock);
    void UpdateVersion();
    /// Replaces the stored filter fields by the daemon's; prints them if asked to.
    void ListFilterFields(bool print);
    [[nodiscard]] const std::vector<std::string>& FilterFields() const { return filter_fields_; }
    [[nodiscard]] std::string SelectSearchField(MenuLock&& lock);
    [[nodiscard]] std::string SetSearchValue(MenuLock&& lock);

    // Filter menus (filter_menus.cpp). What was set stays in `dict`, also when one throws.

    void SelectPullAllFilters(MenuLock&& lock, GVariantDict* dict);
    /// Returns, as if done, when the session is lost while the operator types: the caller looks
    /// whether this object is still there.
    void SelectPullFilters(MenuLock&& lock, GVariantDict* dict);
    void SelectListFilters(MenuLock&& lock, GVariantDict* dict);
    void SelectSizeFilters(MenuLock&& lock, GVariantDict* dict);
    void DisplayFilterMenu() const;
    void DisplayPullFilterMenu() const;
    void DisplayListFilterMenu() const;
    void DisplaySizeFilterMenu() const;
    void RunFilterMenu(MenuLock&& lock, GVariantDict* dict);
    void RunPullFilterMenu(MenuLock&& lock, GVariantDict* dict);
    void RunListFilterMenu(MenuLock&& lock, GVariantDict* dict);
    void RunSizeFilterMenu(MenuLock&& lock, GVariantDict* dict);

    // Filter values (filter_prompts.cpp).

    void SelectFormat(MenuLock&& lock, GVariantDict* dict);
    void SelectOrder(MenuLock&& lock, GVariantDict* dict);
    void SelectCount(MenuLock&& lock, GVariantDict* dict);
    void SelectOffset(MenuLock&& lock, GVariantDict* dict);
    [[nodiscard]] std::string SelectField(MenuLock&& lock);
    [[nodiscard]] std::string SelectFilter(MenuLock&& lock);

    // Transfer (transfer/transfer_menu.cpp).

    /// Holds the transfer at `path` in place of the present one, whose file stays.
    void AllocTransfer(const std::string& path, GVariant* properties);
    void DisplayTransferMenu() const;
    void RunTransferMenu(MenuLock&& lock);
    void DropTransfer() { transfer_.reset(); }

  private:
    using SelectFilters = void (PhonebookContext::*)(MenuLock&&, GVariantDict*);
    using SizeCall = decltype(&obex_phonebook_access1_call_get_size_listing_sync);

    void RequireSelection() const;
    [[nodiscard]] VariantPtr AskFilters(SelectFilters select, MenuLock& lock);
    void PrintFilteredSize(SizeCall call, const char* label, MenuLock& lock);

    GlibPtr<ObexSession1> session_proxy_;
    GlibPtr<ObexPhonebookAccess1> phonebook_proxy_;
    std::unique_ptr<TransferContext> transfer_;
    std::string path_;
    std::vector<std::string> filter_fields_;
    bool phonebook_selected_ = false;
};

}  // namespace morvane
