#pragma once

#include "console/menu_lock.h"
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
/// All operations run on the menu thread with the registry mutex locked. Those with a MenuLock
/// parameter unlock it while they ask the operator; this object may be destroyed meanwhile. After
/// asking they throw InvalidObjectException, before they access any member, unless the session is
/// still valid.
///
/// Operations throw InvalidValueException for an invalid answer or a missing selection,
/// IapiException for a refused call, ProxyException if a transfer's proxy cannot be created, and
/// InputEnded when the input ends in a filter menu. They print nothing then and change no state
/// unless documented.
class PhonebookContext {
  public:
    /// Prints the session's properties and subscribes to their changes. Throws ProxyException.
    explicit PhonebookContext(const std::string& path);
    PhonebookContext(const PhonebookContext&) = delete;
    PhonebookContext& operator=(const PhonebookContext&) = delete;
    /// Deletes the file of the current transfer, if there is one.
    ~PhonebookContext();

    // Session and properties (phonebook_context.cpp).

    void BuildProxy();
    void GetInitialProperties() const;
    void SessionSubscribe();
    /// The session is connected.
    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] std::string GetPathName() const { return path_; }

    // Selection (selection.cpp).

    /// Asks for a location and a phone book and selects them. After a refused call nothing is
    /// selected.
    void Select(MenuLock&& lock);
    [[nodiscard]] std::string SelectLocation(MenuLock&& lock);
    [[nodiscard]] std::string SelectPhonebook(MenuLock&& lock, const std::string& location);

    // Retrieval into the fixed files (retrieval.cpp). A pull replaces the current transfer.

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
    /// Reads the filter fields from the daemon and stores them; prints them if `print`.
    void ListFilterFields(bool print);
    [[nodiscard]] const std::vector<std::string>& FilterFields() const { return filter_fields_; }
    [[nodiscard]] std::string SelectSearchField(MenuLock&& lock);
    [[nodiscard]] std::string SetSearchValue(MenuLock&& lock);

    // Filter menus (filter_menus.cpp). If one throws, `dict` keeps the filters set so far.

    void SelectPullAllFilters(MenuLock&& lock, GVariantDict* dict);
    /// If the session is lost meanwhile, returns without an error, as after 'd': the caller must
    /// check whether this object still exists.
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

    /// Replaces the current transfer, whose file is kept, with the one at `path`.
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
