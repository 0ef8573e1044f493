#include "app/obex_proxy.h"
#include "client/client_proxy_context.h"

#include "console/console_output.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/simulated_bus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

// Makes every operator new fail, to test failed allocations of the tool.
static std::atomic<bool> memory_is_exhausted{false};

void* operator new(std::size_t size) {
    void* const memory = memory_is_exhausted ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Replaced as well, because sanitizers provide their own version otherwise.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return memory_is_exhausted ? nullptr : std::malloc(size);
}

// noinline: GCC would warn about a mismatched free() where only this one is inlined.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace morvane_test {
namespace {

using morvane::ClientProxyContext;
using morvane::kNormal;
using morvane::obexProxy;

constexpr char kAddress[] = "00:1B:DC:07:31:9A";
const std::string kClient = simulator::kClientPath;
const std::string kFoundClient = Normal("Found Client " + kClient + "\n");

std::string Found(const std::string& device) {
    return Normal("Found Device " + device + "\n");
}

std::string Removed(const std::string& path) {
    return Red("Removed " + path + "\n");
}

TEST(RegistryTest, ListsDeviceOncePerAddition) {
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        for (const char* const path : {"/dev_a", "/dev_b", "/dev_aa"})
            bus.daemon().AddDevice(path, kAddress, path);
        for (const char* const path : {"/dev_a", "/dev_b", "/dev_a", "/dev_aa"})
            obexProxy.ObjectAdded(path);
        obexProxy.DeviceList(false);
        obexProxy.ObjectRemoved("/dev_a");
        obexProxy.DeviceList(false);
    });
    const std::string begin = std::string(kAddress) + " | ";
    EXPECT_EQ(output, Found("/dev_a") + Found("/dev_b") + Found("/dev_a") + Found("/dev_aa") +
                          DeviceList({begin + "/dev_a", begin + "/dev_b", begin + "/dev_a",
                                      begin + "/dev_aa"}) +
                          Removed("/dev_a") + DeviceList({begin + "/dev_b", begin + "/dev_aa"}));
}

TEST(RegistryTest, ClassifiesObjectsByPath) {
    const std::string output = OutputOf([] {
        for (const char* const path :
             {"", "/", "dev_", "dev_1", "dev", "dev_/", "/dev_2", "/a/dev_", "/a/dev_/b", "/dev",
              "/DEV_1", "/com/veltrisonix/obex", "com/veltrisonix/obex", "/com/veltrisonix/obex/",
              "/com/veltrisonix/obex/dev_00_11", "/com/veltrisonix/obex/session0"})
            obexProxy.ObjectRemoved(path);
    });
    EXPECT_EQ(output, Removed("dev_") + Removed("dev_1") + Removed("/dev_2") + Removed("/a/dev_") +
                          Removed("/com/veltrisonix/obex") +
                          Removed("/com/veltrisonix/obex/dev_00_11"));
}

// Additions do not wait for the menu thread, which may be reading. ThreadSanitizer reports a
// missing lock.
TEST(RegistryTest, ListsDevicesDuringAdditions) {
    constexpr std::size_t kDevices = 50;
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        bus.daemon().AddDevice("/dev_1", kAddress, "Phone");
        std::thread menu_thread([] {
            for (std::size_t i = 0; i < kDevices; ++i) {
                obexProxy.DeviceList(false);
                PrintLine(obexProxy.GetBusName().c_str());
            }
        });
        for (std::size_t i = 0; i < kDevices; ++i) obexProxy.ObjectAdded("/dev_1");
        menu_thread.join();
        obexProxy.DeviceList(false);
    });
    const std::string end =
        DeviceList(std::vector<std::string>(kDevices, "00:1B:DC:07:31:9A | Phone"));
    ASSERT_GT(output.size(), end.size());
    EXPECT_EQ(output.substr(output.size() - end.size()), end);
}

TEST(RegistryTest, ReplacesClientAddedTwice) {
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(kClient);
        bus.OpenSession();
        const ClientProxyContext* const first = obexProxy.Client();
        obexProxy.ObjectAdded(kClient);
        PrintLine(obexProxy.Client() == first ? "the same" : "another");
        PrintLine(obexProxy.Client()->Phonebook() == nullptr ? "without session" : "with session");
        obexProxy.ObjectRemoved(kClient);
        PrintLine(obexProxy.Client() == nullptr ? "none" : "one");
    });
    const std::string after = output.substr(output.rfind(kFoundClient));
    const std::string file = after.substr(after.find("Removing: "));
    EXPECT_EQ(after, kFoundClient + Normal(file.substr(0, file.find('\n') + 1)) +
                         Lines({"another", "without session"}) + Removed(kClient) +
                         Lines({"none"}));
}

// The menu thread is in a call of the replaced client, which is destroyed before the next prompt.
TEST(RegistryTest, KeepsReplacedClientUntilItsCallReturns) {
    const auto act = [] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(kClient);
        bus.OpenSession();
        bus.daemon().Hang("SetUserId");
        PrintLine("Beginning");
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        bus.daemon().AwaitCall("SetUserId", Patience());
        obexProxy.ObjectAdded(kClient);
        PrintLine("Replaced");
        bus.daemon().Release();
        menu_thread.join();
        PrintLine(obexProxy.IsRunning() ? "running" : "stopped");
    };
    const std::string output = OutputOf(act, "u\nme\n");
    const std::string beginning =
        Lines({"Beginning"}) + Banner() + Prompt() + TextBox("Enter OBEX User Id (Max 20 chars)") +
        ValuePrompt("/User Id") + kFoundClient + Lines({"Replaced"}) + kNormal + "Removing: ";
    const std::size_t begin = output.find(Lines({"Beginning"}));
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(output.substr(begin, beginning.size()), beginning);
    const std::string end = "phonebook.vcf\n" + (kNormal + Prompt()) + Lines({"stopped"});
    EXPECT_EQ(output.substr(output.size() - end.size()), end);
}

TEST(RegistryTest, IsInvalidUnlessRunning) {
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(kClient);
        bus.OpenSession();
        morvane::PROXY_PrintNoPrompt(kNormal, "%d %d %d\n", obexProxy.Client()->IsValid(),
                                     obexProxy.IsClientValid(), obexProxy.IsValid());
    });
    EXPECT_NE(output.find(Normal("1 0 0\n")), output.npos) << output;
}

TEST(RegistryTest, ReportsObjectsWithoutProxyAndContinues) {
    const std::string output = OutputOf([] {
        UseBus("unix:path=/nowhere/bus");
        obexProxy.ObjectAdded(kClient);
        PrintLine(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.ObjectAdded("/dev_1");
        const SimulatedBus bus;
        obexProxy.ObjectAdded("/dev_2");
        obexProxy.ObjectAdded(kClient);
        PrintLine(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.DeviceList(false);
    });
    const std::string reason = "Could not connect: No such file or directory\n";
    EXPECT_EQ(output, kFoundClient + Red("Failed to allocate Client proxy. Message: " + reason) +
                          Lines({"none"}) + Found("/dev_1") +
                          Red("Failed to allocate Device proxy. Message: " + reason) +
                          Found("/dev_2") + kFoundClient + Lines({"one"}) +
                          DeviceList({"Unknown | Unknown"}));
}

TEST(RegistryTest, ReportsFailedAllocationAndKeepsPreviousClient) {
    const std::string output = OutputOf([] {
        const SimulatedBus bus;
        const std::string client = kClient;
        const std::string device = "/dev_1";
        const auto add_without_memory = [](const std::string& path) {
            memory_is_exhausted = true;
            obexProxy.ObjectAdded(path);
            memory_is_exhausted = false;
        };
        add_without_memory(client);
        PrintLine(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.ObjectAdded(client);
        const ClientProxyContext* const first = obexProxy.Client();
        add_without_memory(client);
        PrintLine(obexProxy.Client() == first ? "the same" : "another");
        add_without_memory(device);
        obexProxy.ObjectAdded(device);
        obexProxy.DeviceList(false);
    });
    const std::string failure = Red("Allocation failed: std::bad_alloc");
    EXPECT_EQ(output, kFoundClient + failure + Lines({"none"}) + kFoundClient + kFoundClient +
                          failure + Lines({"the same"}) + Found("/dev_1") + failure +
                          Found("/dev_1") + DeviceList({"Unknown | Unknown"}));
}

TEST(ClientContextTest, RemoveSessionReturnsSuccess) {
    const std::string output = OutputOf([] {
        SimulatedBus bus;
        obexProxy.ObjectAdded(kClient);
        ClientProxyContext& client = *obexProxy.Client();
        PrintLine(client.RemoveSession() ? "nothing to remove" : "failed");
        bus.OpenSession();
        bus.daemon().Refuse("RemoveSession", "com.veltrisonix.Error.Failed", "Busy", 1);
        PrintLine(client.RemoveSession() ? "removed" : "not removed");
        PrintLine(client.RemoveSession() ? "now removed" : "failed");
    });
    const std::string busy =
        Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Busy\n");
    EXPECT_NE(output.find(Lines({"nothing to remove"})), output.npos) << output;
    EXPECT_NE(output.find(busy + Lines({"not removed"})), output.npos) << output;
    EXPECT_NE(output.find(Lines({"now removed"})), output.npos) << output;
}

}  // namespace
}  // namespace morvane_test
