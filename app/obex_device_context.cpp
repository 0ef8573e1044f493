#include "app/obex_device_context.h"

#include "console/console_output.h"
#include "interfaces/bus_name.h"
#include "interfaces/property_notices.h"
#include "interfaces/remote_call.h"

namespace morvane {

ObexDeviceContext::ObexDeviceContext(const std::string& bus_name, const std::string& path)
    : path_(path) {
    BuildProxy(bus_name);
}

ObexDeviceContext::ObexDeviceContext(const std::string& path) : ObexDeviceContext("", path) {}

void ObexDeviceContext::BuildProxy(const std::string& bus_name) {
    proxy_ = MakeProxy(device1_proxy_new_for_bus_sync,
                       bus_name.empty() ? kDefaultBusName : bus_name, path_, "Device");
}

void ObexDeviceContext::Display(bool select, int index) const {
    const TextPtr address(device1_dup_address(proxy_.get()));
    const TextPtr alias(device1_dup_alias(proxy_.get()));
    if (select) {
        PROXY_Print(kNormal, " %d) %s | %s\n", index, OrUnknown(address.get()),
                    OrUnknown(alias.get()));
    } else {
        PROXY_Print(kNormal, " %s | %s\n", OrUnknown(address.get()), OrUnknown(alias.get()));
    }
}

std::string ObexDeviceContext::GetAddress() const {
    const TextPtr address(device1_dup_address(proxy_.get()));
    return address.get();  // the constructor throws std::logic_error on null
}

}  // namespace morvane
