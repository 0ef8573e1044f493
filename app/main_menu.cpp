#include "app/obex_proxy.h"
#include "client/client_proxy_context.h"
#include "console/menu.h"
#include "console/reporting.h"

namespace morvane {
namespace {

using MainAction = void (*)(ObexProxy& proxy, MenuLock& lock);
using MainRow = MenuRow<MainAction>;

// RunMenu() calls StopThreads() when it leaves the menu.
void Quit(ObexProxy& /*proxy*/, MenuLock& /*lock*/) {}

constexpr MainRow kRows[] = {
    {'c', "Create Session", [](ObexProxy& proxy, MenuLock& lock) { proxy.RunSession(lock); }},
    {'r', "Remove Session", [](ObexProxy& proxy, MenuLock& /*lock*/) { proxy.RemoveSession(); }},
    {'l', "List Devices", [](ObexProxy& proxy, MenuLock& /*lock*/) { proxy.DeviceList(false); }},
    {'u', "Set OBEX User Id",
     [](ObexProxy& proxy, MenuLock& lock) {
         ReportErrors<InvalidObjectException>([&] { proxy.Client()->SetUserId(Lend(lock)); });
     }},
    {'p', "Set OBEX Password",
     [](ObexProxy& proxy, MenuLock& lock) {
         ReportErrors<InvalidObjectException>([&] { proxy.Client()->SetPassword(Lend(lock)); });
     }},
    {'h', "Help", [](ObexProxy& proxy, MenuLock& /*lock*/) { proxy.DisplayMenu(); }},
    {},
    {'q', "Quit", Quit, AfterKey::kLeave},
    {'Q', nullptr, Quit, AfterKey::kLeave},
};
static_assert(HasDistinctKeys(kRows));
constexpr Table<MainRow> kMenu = kRows;

void PrintBanner(const std::string& title) {
    PROXY_Print(kGreen, "\n");
    PrintStars();
    PROXY_Print(kGreen, "********************** %s **********************\n", title.c_str());
    PrintStars();
    PROXY_Print(kGreen, "* Type 'help' for Menu Options, or 'quit' to Exit   *\n");
    PrintStars();
    PROXY_Print(kGreen, "\n");
}

// Without a client object only the keys that quit are accepted.
bool NeedsClient(char key) {
    const MainRow* const row = FindRow(kMenu, key);
    return row == nullptr || row->after_key != AfterKey::kLeave;
}

}  // namespace

void ObexProxy::RunMenu() {
    MenuLock lock(registry_mutex_.Unchecked());
    PrintBanner(title_);
    auto next = AfterKey::kGoOn;
    while (IsRunning() && next == AfterKey::kGoOn) {
        MenuPause();
        const char key = AskKey(lock, title_);
        if (!IsRunning()) {
            break;
        }
        if (NeedsClient(key) && !IsClientValid()) {
            PROXY_Print(kRed, "No Client available, start daemon.\n");
            continue;
        }
        next = ActOnKey(kMenu, key, *this, lock);
    }
    StopThreads();
}

void ObexProxy::DisplayMenu() const {
    PrintMenu(nullptr, kMenu);
}

void ObexProxy::DeviceList(bool select) const {
    select ? PrintHeading("Select a Client") : PrintStars();
    int index = 0;
    for (const ObexDeviceContext* device : Devices()) {
        device->Display(select, index++);
    }
    if (select) {
        PrintDashes();
        PrintExitLine();
    }
    PrintStars();
}

std::string ObexProxy::DeviceSelect(MenuLock&& lock) {
    if (Devices().empty()) {
        PROXY_Print(kRed, "No Clients\n");
        return "";
    }
    DeviceList(true);
    const unsigned int index = AskNumber(lock, PromptPath("/Select Device"));
    if (!IsClientValid()) {
        throw InvalidObjectException("Client Proxy is invalid");
    }
    const std::vector<const ObexDeviceContext*> devices = Devices();
    if (index >= devices.size()) {
        throw InvalidValueException("Invalid Client selected");
    }
    return devices[index]->GetAddress();
}

void ObexProxy::RunSession(MenuLock& lock) {
    try {
        ReportErrors<ProxyException, InvalidValueException>([&] {
            const std::string address = DeviceSelect(Lend(lock));
            if (address.empty() || !Client()->CreateSession(address, Lend(lock))) {
                return;
            }
            Client()->RunProfileMenu(Lend(lock), Client()->GetPathName());
            RemoveSession();
        });
    } catch (const InvalidObjectException& error) {
        PrintError(error);
        RemoveSession();
    }
}

// The client may have been removed while its session's menus ran.
void ObexProxy::RemoveSession() {
    if (ClientProxyContext* const client = Client()) {
        client->RemoveSession();
    }
}

}  // namespace morvane
