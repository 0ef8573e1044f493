#include "unit/simulated_bus.h"

#include "app/obex_proxy.h"
#include "client/client_proxy_context.h"
#include "console/console_output.h"

#include <cstdlib>
#include <mutex>
#include <stdexcept>

namespace morvane_test {

void UseBus(const std::string& address) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
}

void PrintLine(const char* text) {
    morvane::PROXY_PrintNoPrompt(morvane::kNormal, "%s\n", text);
}

// The reply of the bus arrives after all signals that were sent before the call.
void DispatchSignals() {
    const morvane::GlibPtr<GDBusConnection> connection(
        g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    CallOnBus(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
              "org.freedesktop.DBus", "GetId");
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

SimulatedBus::SimulatedBus() : daemon_(bus_.Address(), Options("")) {
    UseBus(bus_.Address());
}

simulator::Options SimulatedBus::Options(const std::string& instance) const {
    auto options = simulator::Options::Scripted();
    options.instance = instance;
    options.directory = directory_.Path();
    return options;
}

void SimulatedBus::OpenSession() {
    constexpr char kPhoneAddress[] = "00:1B:DC:07:31:9A";
    daemon_.AddDevice("/dev_1", kPhoneAddress, "Phone");
    morvane::ClientProxyContext& client = *morvane::obexProxy.Client();
    std::mutex mutex;
    if (!client.CreateSession(kPhoneAddress, morvane::MenuLock(mutex)))
        throw std::runtime_error("no session");
    daemon_.SetPullContent("x");
    CallOnBus(ConnectToBus(bus_.Address()).get(), daemon_.BusName(),
              daemon_.Sessions().back().c_str(), simulator::kPhonebookInterface, "PullAll",
              g_variant_new_parsed("('/tmp/phonebook.vcf', @a{sv} {})"));
    client.Phonebook()->AllocTransfer(daemon_.Transfers().back(), nullptr);
}

}  // namespace morvane_test
