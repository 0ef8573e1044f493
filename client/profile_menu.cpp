#include "app/obex_proxy.h"
#include "client/client_proxy_context.h"
#include "console/menu.h"
#include "console/reporting.h"

namespace morvane {
namespace {

using ProfileAction = void (*)(ClientProxyContext& client, MenuLock& lock);
using ProfileRow = MenuRow<ProfileAction>;
using PhonebookOperation = void (PhonebookContext::*)(MenuLock&&);

template <PhonebookOperation kOperation>
void Run(ClientProxyContext& client, MenuLock& lock) {
    (client.Phonebook()->*kOperation)(Lend(lock));
}

template <PhonebookOperation kPull>
void RunPull(ClientProxyContext& client, MenuLock& lock) {
    ReportErrors<ProxyException>([&] {
        Run<kPull>(client, lock);
        Run<&PhonebookContext::RunTransferMenu>(client, lock);
    });
}

void Quit(ClientProxyContext& /*client*/, MenuLock& /*lock*/) {
    obexProxy.StopThreads();
}

constexpr ProfileRow kRows[] = {
    {'s', "Select Phonebook", Run<&PhonebookContext::Select>},
    {'a', "Pull Phonebook", RunPull<&PhonebookContext::PullAll>},
    {'p', "Pull Phonebook Entry", RunPull<&PhonebookContext::Pull>},
    {'l', "List vCards in Phonebook", Run<&PhonebookContext::List>},
    {'o', "Search Phonebook", Run<&PhonebookContext::Search>},
    {'g', "Get Phonebook Size (No Filters)",
     [](ClientProxyContext& client, MenuLock& /*lock*/) { client.Phonebook()->GetSize(); }},
    {'m', "Get Size Phonebook", Run<&PhonebookContext::GetSizePhonebook>},
    {'n', "Get Size Listing", Run<&PhonebookContext::GetSizeListing>},
    {'u', "Update Version",
     [](ClientProxyContext& client, MenuLock& /*lock*/) { client.Phonebook()->UpdateVersion(); }},
    {'f', "List Filter Fields",
     [](ClientProxyContext& client, MenuLock& /*lock*/) {
         client.Phonebook()->ListFilterFields(true);
     }},
    {},
    {'h', "Help",
     [](ClientProxyContext& client, MenuLock& /*lock*/) { client.DisplayPhonebookMenu(); }},
    {},
    {'x', "Exit this Menu", [](ClientProxyContext& /*client*/, MenuLock& /*lock*/) {},
     AfterKey::kLeave},
    {'q', "Quit", Quit, AfterKey::kLeave},
    {'Q', nullptr, Quit, AfterKey::kLeave},
};
static_assert(HasDistinctKeys(kRows));
constexpr Table<ProfileRow> kMenu = kRows;

AfterKey ActOnKeyReporting(char key, ClientProxyContext& client, MenuLock& lock) {
    auto next = AfterKey::kGoOn;
    try {
        ReportErrors<InvalidValueException, IapiException, SapiException>(
            [&] { next = ActOnKey(kMenu, key, client, lock); });
    } catch (const InputEnded&) {  // NOLINT(bugprone-empty-catch): the menu's own next read quits
    }
    return next;
}

void RequireClientAndSession() {
    if (!obexProxy.IsValid()) {
        throw InvalidObjectException("Client Proxy is invalid");
    }
}

}  // namespace

void ClientProxyContext::DisplayPhonebookMenu() const {
    PrintMenu(nullptr, kMenu);
}

void ClientProxyContext::RunProfileMenu(MenuLock&& lock, const std::string& /*name*/) {
    const std::string prompt_path = obexProxy.PromptPath("/Phonebook Menu");
    auto next = AfterKey::kGoOn;
    while (obexProxy.IsRunning() && next == AfterKey::kGoOn) {
        MenuPause();
        RequireClientAndSession();
        const char key = obexProxy.AskKey(lock, prompt_path);
        RequireClientAndSession();
        // A valid session belongs to this client: only this thread opens sessions.
        next = ActOnKeyReporting(key, *this, lock);
    }
}

}  // namespace morvane
