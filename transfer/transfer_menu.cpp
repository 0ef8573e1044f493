#include "app/obex_proxy.h"
#include "console/menu.h"
#include "console/reporting.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"

namespace morvane {
namespace {

using TransferAction = void (*)(PhonebookContext& phonebook, TransferContext& transfer);
using TransferRow = MenuRow<TransferAction>;

void CancelDownload(PhonebookContext& phonebook, TransferContext& transfer) {
    ReportErrors<IapiException, SapiException>([&] {
        transfer.Cancel();
        transfer.RemoveDownloadedFile();
        phonebook.DropTransfer();
    });
}

void Leave(PhonebookContext& phonebook, TransferContext& transfer) {
    transfer.RemoveDownloadedFile();
    phonebook.DropTransfer();
}

void Quit(PhonebookContext& /*phonebook*/, TransferContext& /*transfer*/) {
    obexProxy.StopThreads();
}

constexpr TransferRow kRows[] = {
    {'c', "Cancel Download", CancelDownload},
    {'d', "Display download file",
     [](PhonebookContext&, TransferContext& transfer) { transfer.DisplayDownloadedFile(); }},
    {'s', "Show Status",
     [](PhonebookContext&, TransferContext& transfer) { transfer.DisplayStatus(); }},
    {'p', "Suspend transfer",
     [](PhonebookContext&, TransferContext& transfer) { transfer.Suspend(); }},
    {'r', "Resume transfer",
     [](PhonebookContext&, TransferContext& transfer) { transfer.Resume(); }},
    {},
    {'h', "Help",
     [](PhonebookContext& phonebook, TransferContext&) { phonebook.DisplayTransferMenu(); }},
    {},
    {'x', "Exit this Menu", Leave, AfterKey::kLeave},
    {'q', "Quit", Quit, AfterKey::kLeave},
    {'Q', nullptr, Quit, AfterKey::kLeave},
};
static_assert(HasDistinctKeys(kRows));
constexpr Table<TransferRow> kMenu = kRows;

}  // namespace

void PhonebookContext::AllocTransfer(const std::string& path, GVariant* properties) {
    if (path.empty()) {
        throw InvalidValueException("Object Path cannot be empty");
    }
    auto transfer = std::make_unique<TransferContext>(path, properties);
    transfer_.swap(transfer);
}

void PhonebookContext::DisplayTransferMenu() const {
    PrintMenu(nullptr, kMenu);
}

void PhonebookContext::RunTransferMenu(MenuLock&& lock) {
    const std::string prompt_path = obexProxy.PromptPath("/Transfer Menu");
    MenuPause();  // for the transfer's first notifications
    auto next = AfterKey::kGoOn;
    while (obexProxy.IsRunning() && next == AfterKey::kGoOn) {
        MenuPause();
        RequireSession();
        const char key = obexProxy.AskKey(lock, prompt_path);
        RequireSession();
        if (!transfer_) {
            return;  // cancelled: any next key ends the menu
        }
        next = ActOnKey(kMenu, key, *this, *transfer_);
    }
}

}  // namespace morvane
