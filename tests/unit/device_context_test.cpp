#include "app/obex_device_context.h"

#include "console/console_output.h"
#include "interfaces/remote_call.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/competing_thread.h"
#include "unit/simulated_bus.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <atomic>
#include <string>
#include <thread>

namespace morvane_test {
namespace {

using morvane::ObexDeviceContext;

constexpr char kDeviceAddress[] = "00:1B:DC:07:31:9A";

TEST(DeviceContextTest, UsesDefaultBusNameIfEmpty) {
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        simulator::Daemon instance(bus.private_bus().Address(), bus.Options("second"));
        bus.daemon().AddDevice("/dev_1", kDeviceAddress, "Default");
        instance.AddDevice("/dev_1", kDeviceAddress, "Instance");
        for (const char* const bus_name : {"", "com.veltrisonix.second"})
            ObexDeviceContext(bus_name, "/dev_1").Display(false, 0);
        const ObexDeviceContext device("/dev_1");
        device.Display(false, 0);
        PrintLine(device.GetPathName().c_str());
    });
    const std::string address = std::string(" ") + kDeviceAddress + " | ";
    EXPECT_EQ(output,
              Lines({address + "Default", address + "Instance", address + "Default", "/dev_1"}));
}

// Long enough to have its own pages and to take a while to print.
GVariant* LongAlias(std::size_t number) {
    constexpr gsize kLength = 200000;
    return g_variant_new_take_string(g_strnfill(kLength, static_cast<gchar>('a' + number % 3)));
}

// The truncated line for a long alias.
std::string LineOfLongAlias(char letter) {
    const std::string begin = std::string(" ") + kDeviceAddress + " | ";
    return Normal(begin + std::string(999 - begin.size(), letter));
}

#ifdef __SANITIZE_THREAD__
constexpr int kChanges = 20;  // detects a race in any schedule, and maps memory slowly
#else
constexpr int kChanges = 200;
#endif

// The main thread frees an alias while the menu thread prints it.
TEST(DeviceContextTest, IsDisplayedDuringAliasChanges) {
    constexpr int kLines = 1000;
    const std::string output = OutputOf([] {
        mallopt(M_MMAP_THRESHOLD, 100000);  // unmaps freed texts, so that reading them crashes
        SimulatedBus bus;
        bus.daemon().AddDevice("/dev_1", kDeviceAddress, std::string(200000, 'a'));
        PinToOneProcessor();
        const ObexDeviceContext device("/dev_1");
        std::atomic<bool> done{false};
        std::atomic<bool> stop{false};
        std::thread menu_thread([&] {
            LowerPriority();
            for (int line = 0; line < kLines && !stop; ++line) device.Display(false, 0);
            done = true;
        });
        for (int change = 0; change < kChanges && !done; change += 2) {
            bus.daemon().Flood("/dev_1", simulator::kDeviceInterface, "Alias", 2, LongAlias);
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
        }
        stop = true;
        menu_thread.join();
    });
    const std::size_t length = LineOfLongAlias('a').size();
    ASSERT_GE(output.size(), length);
    ASSERT_EQ(output.size() % length, 0u);
    for (std::size_t at = 0; at < output.size(); at += length) {
        const std::string line = output.substr(at, length);
        ASSERT_EQ(line, LineOfLongAlias(line[length / 2]));
    }
}

TEST(ProxyTest, HasNoFlagsAndDefaultTimeOut) {
    const std::string output = OutputOf([] {
        const PrivateBus bus;
        UseBus(bus.Address());
        const auto made = morvane::MakeProxy(device1_proxy_new_for_bus_sync,
                                             "com.veltrisonix.second", "/dev_1", "Device");
        GDBusProxy* const proxy = G_DBUS_PROXY(made.get());
        morvane::PROXY_PrintNoPrompt(
            morvane::kNormal, "%s %s %s flags %d time-out %d\n", g_dbus_proxy_get_name(proxy),
            g_dbus_proxy_get_object_path(proxy), g_dbus_proxy_get_interface_name(proxy),
            g_dbus_proxy_get_flags(proxy), g_dbus_proxy_get_default_timeout(proxy));
    });
    EXPECT_EQ(
        output,
        Normal("com.veltrisonix.second /dev_1 com.veltrisonix.Device1 flags 0 time-out -1\n"));
}

}  // namespace
}  // namespace morvane_test
