#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "interfaces/remote_call.h"
#include "simulator/daemon.h"
#include "support/captured_run.h"
#include "support/exhaustible_memory.h"
#include "support/messages.h"
#include "support/private_bus.h"
#include "support/rival.h"
#include "support/scheduling.h"
#include "support/system_calls.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace morvane {
namespace {

using morvane_test::Banner;
using morvane_test::DeviceList;
using morvane_test::Green;
using morvane_test::Lines;
using morvane_test::memory_is_exhausted;
using morvane_test::Normal;
using morvane_test::OutputOf;
using morvane_test::Prompt;
using morvane_test::Red;
using morvane_test::Rival;
using morvane_test::sleep_substitute;
using morvane_test::TextBox;
using morvane_test::ValuePrompt;

constexpr char kAddress[] = "00:1B:DC:07:31:9A";
const std::string kClient = simulator::kClientPath;
const std::string kFoundClient = Normal("Found Client " + kClient + "\n");

std::string Found(const std::string& device) {
    return Normal("Found Device " + device + "\n");
}

std::string Removed(const std::string& path) {
    return Red("Removed " + path + "\n");
}

void UseBus(const std::string& address) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
}

void Say(const char* text) {
    PROXY_PrintNoPrompt(kNormal, "%s\n", text);
}

/// The bus with the daemon, for one process.
struct Bench {
    explicit Bench(const std::string& instance = "") : daemon(bus.Address(), Options(instance)) {
        UseBus(bus.Address());
    }

    simulator::Options Options(const std::string& instance) const {
        auto options = simulator::Options::Scripted();
        options.instance = instance;
        options.directory = directory.Path();
        return options;
    }

    std::string File() const { return directory.File("phonebook.vcf"); }

    /// The application's client gets a session with a transfer, whose file goes with it.
    void OpenSession() {
        daemon.AddDevice("/dev_1", kAddress, "Phone");
        std::mutex mutex;
        if (!obexProxy.Client()->CreateSession(kAddress, MenuLock(mutex)))
            throw std::runtime_error("no session");
        daemon.SetPullContent("x");
        const auto connection = morvane_test::ConnectToBus(bus.Address());
        const VariantPtr reply(g_dbus_connection_call_sync(
            connection.get(), daemon.BusName().c_str(), daemon.Sessions().back().c_str(),
            simulator::kPhonebookInterface, "PullAll",
            g_variant_new_parsed("('/tmp/phonebook.vcf', @a{sv} {})"), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        obexProxy.Client()->Phonebook()->AllocTransfer(daemon.Transfers().back(), nullptr);
    }

    morvane_test::TemporaryDirectory directory;
    morvane_test::PrivateBus bus;
    simulator::Daemon daemon;
};

TEST(RegistryTest, ListsADeviceAsOftenAsItWasAnnounced) {
    const std::string output = OutputOf([] {
        Bench bench;
        for (const char* const path : {"/dev_a", "/dev_b", "/dev_c", "/dev_aa"})
            bench.daemon.AddDevice(path, kAddress, path);
        for (const char* const path : {"/dev_a", "/dev_b", "/dev_a", "/dev_c", "/dev_aa"})
            obexProxy.ObjectAdded(path);
        obexProxy.DeviceList(false);
        obexProxy.ObjectRemoved("/dev_a");
        obexProxy.DeviceList(false);
    });
    const std::string address = std::string(kAddress) + " | ";
    EXPECT_EQ(output,
              Found("/dev_a") + Found("/dev_b") + Found("/dev_a") + Found("/dev_c") +
                  Found("/dev_aa") +
                  DeviceList({address + "/dev_a", address + "/dev_b", address + "/dev_a",
                              address + "/dev_c", address + "/dev_aa"}) +
                  Removed("/dev_a") +
                  DeviceList({address + "/dev_b", address + "/dev_c", address + "/dev_aa"}));
}

// Additions do not wait for the menu thread, which may be looking. ThreadSanitizer sees what may go
// wrong, whether or not it does.
TEST(RegistryTest, ListsDevicesWhileOthersAreFound) {
    constexpr std::size_t kDevices = 50;
    const std::string output = OutputOf([] {
        Bench bench;
        bench.daemon.AddDevice("/dev_1", kAddress, "Phone");
        std::thread menu_thread([] {
            for (std::size_t i = 0; i < kDevices; ++i) {
                obexProxy.DeviceList(false);
                Say(obexProxy.GetBusName().c_str());
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

TEST(RegistryTest, TellsObjectsByTheirPathAlone) {
    const std::string output = OutputOf([] {
        for (const char* const path :
             {"", "/", "dev_", "dev_1", "dev", "dev_/", "/a/dev_", "/a/dev_/b", "/dev", "/DEV_1",
              "/com/veltrisonix/obex", "com/veltrisonix/obex", "/com/veltrisonix/obex/",
              "/com/veltrisonix/obex/dev_00_11", "/com/veltrisonix/obex/session0"})
            obexProxy.ObjectRemoved(path);
    });
    EXPECT_EQ(output, Removed("dev_") + Removed("dev_1") + Removed("/a/dev_") +
                          Removed("/com/veltrisonix/obex") +
                          Removed("/com/veltrisonix/obex/dev_00_11"));
}

TEST(RegistryTest, ReplacesAClientThatIsAnnouncedAgain) {
    const std::string output = OutputOf([] {
        Bench bench;
        obexProxy.ObjectAdded(kClient);
        bench.OpenSession();
        const ClientProxyContext* const first = obexProxy.Client();
        std::string file = bench.File();
        Say(file.c_str());
        obexProxy.ObjectAdded(kClient);
        Say(obexProxy.Client() == first ? "the same" : "another");
        Say(obexProxy.Client()->Phonebook() == nullptr ? "without session" : "with session");
        obexProxy.ObjectRemoved(kClient);
        Say(obexProxy.Client() == nullptr ? "none" : "one");
    });
    const std::size_t file_begin = output.find("/tmp/");
    ASSERT_NE(file_begin, std::string::npos);
    const std::string file = output.substr(file_begin, output.find('\n', file_begin) - file_begin);
    const std::string after = output.substr(output.rfind(kFoundClient));
    EXPECT_EQ(after, kFoundClient + Normal("Removing: " + file + "\n") +
                         Lines({"another", "without session"}) + Removed(kClient) +
                         Lines({"none"}));
}

TEST(RegistryTest, KeepsTheClientWhoseReplacementFails) {
    const std::string output = OutputOf([] {
        const Bench bench;
        const std::string path = kClient;
        obexProxy.ObjectAdded(path);
        const ClientProxyContext* const first = obexProxy.Client();
        memory_is_exhausted = true;
        obexProxy.ObjectAdded(path);
        memory_is_exhausted = false;
        Say(obexProxy.Client() == first ? "the same" : "another");
    });
    EXPECT_EQ(output, kFoundClient + kFoundClient + Red("Allocation failed: std::bad_alloc") +
                          Lines({"the same"}));
}

// The menu thread is inside the replaced client: it goes before that thread asks again.
TEST(RegistryTest, KeepsAReplacedClientWhileItIsInUse) {
    const auto act = [] {
        Bench bench;
        obexProxy.ObjectAdded(kClient);
        bench.OpenSession();
        bench.daemon.Hang("SetUserId");
        Say("Beginning");
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        bench.daemon.AwaitCall("SetUserId", morvane_test::Patience());
        obexProxy.ObjectAdded(kClient);
        Say("Replaced");
        bench.daemon.Release();
        menu_thread.join();
        Say(obexProxy.IsRunning() ? "running" : "stopped");
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

TEST(RegistryTest, IsNeverValidUnlessRunning) {
    const std::string output = OutputOf([] {
        Bench bench;
        obexProxy.ObjectAdded(kClient);
        bench.OpenSession();
        Say(obexProxy.Client()->IsValid() ? "The session is valid" : "no session");
        Say(obexProxy.IsClientValid() ? "IsClientValid" : "not running");
        Say(obexProxy.IsValid() ? "IsValid" : "not running");
    });
    const std::string end = Lines({"The session is valid", "not running", "not running"});
    EXPECT_EQ(output.substr(output.rfind(Lines({"The session is valid"}))), end);
}

TEST(RegistryTest, LeavesOutWhatCannotBeReachedAndGoesOn) {
    const std::string output = OutputOf([] {
        UseBus("unix:path=/nowhere/bus");
        obexProxy.ObjectAdded(kClient);
        Say(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.ObjectAdded("/dev_1");
        const Bench bench;
        obexProxy.ObjectAdded("/dev_2");
        obexProxy.ObjectAdded(kClient);
        Say(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.DeviceList(false);
    });
    const std::string reason = "Could not connect: No such file or directory\n";
    EXPECT_EQ(output, kFoundClient + Red("Failed to allocate Client proxy. Message: " + reason) +
                          Lines({"none"}) + Found("/dev_1") +
                          Red("Failed to allocate Device proxy. Message: " + reason) +
                          Found("/dev_2") + kFoundClient + Lines({"one"}) +
                          DeviceList({"Unknown | Unknown"}));
}

TEST(RegistryTest, LeavesOutWhatThereIsNoMemoryForAndGoesOn) {
    const std::string output = OutputOf([] {
        const Bench bench;
        const std::string device = "/dev_1";
        memory_is_exhausted = true;
        obexProxy.ObjectAdded(kClient);
        obexProxy.ObjectAdded(device);
        memory_is_exhausted = false;
        Say(obexProxy.Client() == nullptr ? "none" : "one");
        obexProxy.ObjectAdded(device);
        obexProxy.DeviceList(false);
    });
    const std::string failure = Red("Allocation failed: std::bad_alloc");
    EXPECT_EQ(output, kFoundClient + failure + Found("/dev_1") + failure + Lines({"none"}) +
                          Found("/dev_1") + DeviceList({"Unknown | Unknown"}));
}

TEST(ClientContextTest, TellsWhetherTheSessionIsRemoved) {
    const std::string output = OutputOf([] {
        Bench bench;
        obexProxy.ObjectAdded(kClient);
        ClientProxyContext& client = *obexProxy.Client();
        Say(client.GetPathName().c_str());
        const auto remove = [&] { Say(client.RemoveSession() ? "removed" : "not removed"); };
        remove();
        bench.OpenSession();
        bench.daemon.Refuse("RemoveSession", "com.veltrisonix.Error.Failed", "Busy", 1);
        remove();
        Say(client.Phonebook() == nullptr ? "without session" : "with session");
        remove();
        Say(client.Phonebook() == nullptr ? "without session" : "with session");
        remove();
    });
    const std::string failed = "Remove Session failed GDBus.Error:com.veltrisonix.Error.";
    EXPECT_EQ(output.find(kFoundClient + Lines({kClient, "removed", "Session Connected"})), 0U);
    const std::string removal = output.substr(output.find(Red(failed + "Failed: Busy\n")));
    const std::string file = removal.substr(removal.find("Removing: "));
    EXPECT_EQ(removal,
              Red(failed + "Failed: Busy\n") + Lines({"not removed", "with session"}) +
                  Normal(file.substr(0, file.find('\n') + 1)) +
                  Lines({"removed", "without session"}) +
                  Red(failed + "DoesNotExist: No such session: " + kClient + "/client/session0\n") +
                  Lines({"not removed"}));
}

TEST(DeviceContextTest, FallsBackToTheDefaultBusName) {
    const std::string output = OutputOf([] {
        Bench bench;
        simulator::Daemon instance(bench.bus.Address(), bench.Options("bench"));
        bench.daemon.AddDevice("/dev_1", "00:00:00:00:00:01", "Default");
        instance.AddDevice("/dev_1", "00:00:00:00:00:02", "Instance");
        const ObexDeviceContext devices[] = {ObexDeviceContext("/dev_1"),
                                             ObexDeviceContext("", "/dev_1"),
                                             ObexDeviceContext("com.veltrisonix.bench", "/dev_1")};
        for (const ObexDeviceContext& device : devices) {
            device.Display(false, 7);
            device.Display(true, 7);
            Say(device.GetAddress().c_str());
            Say(device.GetPathName().c_str());
        }
    });
    const std::string on_default =
        Lines({" 00:00:00:00:00:01 | Default", " 7) 00:00:00:00:00:01 | Default",
               "00:00:00:00:00:01", "/dev_1"});
    const std::string on_instance =
        Lines({" 00:00:00:00:00:02 | Instance", " 7) 00:00:00:00:00:02 | Instance",
               "00:00:00:00:00:02", "/dev_1"});
    EXPECT_EQ(output, on_default + on_default + on_instance);
}

// One letter, so often that the text has pages of its own and that it takes a while to print.
GVariant* LongAlias(std::size_t number) {
    constexpr gsize kLength = 200000;
    return g_variant_new_take_string(g_strnfill(kLength, static_cast<gchar>('a' + number % 3)));
}

// What is printed of it.
std::string LineOfLongAlias(char letter) {
    const std::string begin = std::string(" ") + kAddress + " | ";
    return Normal(begin + std::string(999 - begin.size(), letter));
}

// The main thread drops a text while the menu thread is about to print it.
TEST(DeviceContextTest, IsShownWhileItsAliasKeepsChanging) {
    constexpr int kLines = 1000;
    const std::string output = OutputOf([] {
        mallopt(M_MMAP_THRESHOLD, 100000);  // a text that was dropped can no longer be read
        Bench bench;
        bench.daemon.AddDevice("/dev_1", kAddress, std::string(200000, 'a'));
        morvane_test::StayOnOneProcessor();
        const ObexDeviceContext device("/dev_1");
        std::atomic<bool> shown{false};
        std::thread menu_thread([&] {
            morvane_test::StayBehindOtherThreads();
            for (int line = 0; line < kLines; ++line) device.Display(false, 0);
            shown = true;
        });
        while (!shown) {
            bench.daemon.Flood("/dev_1", simulator::kDeviceInterface, "Alias", 2, LongAlias);
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
        }
        menu_thread.join();
    });
    const std::size_t length = LineOfLongAlias('a').size();
    ASSERT_EQ(output.size(), length * kLines);
    for (std::size_t at = 0; at < output.size(); at += length) {
        const std::string line = output.substr(at, length);
        ASSERT_EQ(line, LineOfLongAlias(line[length / 2]));
    }
}

TEST(DeviceContextTest, HasNoAddressWithoutADaemon) {
    const std::string output = OutputOf([] {
        const morvane_test::PrivateBus bus;
        UseBus(bus.Address());
        const ObexDeviceContext device("/dev_1");
        try {
            Say(device.GetAddress().c_str());
        } catch (const std::logic_error&) {
            Say("logic error");
        }
    });
    EXPECT_EQ(output, Lines({"logic error"}));
}

TEST(ProxyTest, HasNoFlagsAndTheTimeOutOfTheBus) {
    const std::string output = OutputOf([] {
        const morvane_test::PrivateBus bus;
        UseBus(bus.Address());
        const auto made =
            MakeProxy(device1_proxy_new_for_bus_sync, "com.veltrisonix.bench", "/dev_1", "Device");
        GDBusProxy* const proxy = G_DBUS_PROXY(made.get());
        Say(g_dbus_proxy_get_name(proxy));
        Say(g_dbus_proxy_get_object_path(proxy));
        Say(g_dbus_proxy_get_interface_name(proxy));
        EXPECT_EQ(g_dbus_proxy_get_flags(proxy), G_DBUS_PROXY_FLAGS_NONE);
        EXPECT_EQ(g_dbus_proxy_get_default_timeout(proxy), -1);
        Say(testing::Test::HasFailure() ? "otherwise" : "as expected");
    });
    EXPECT_EQ(output,
              Lines({"com.veltrisonix.bench", "/dev_1", "com.veltrisonix.Device1", "as expected"}));
}

// The flag may have been set and cleared before the main thread looks.
TEST(StartHandshakeTest, EndsWhenTheMenuThreadWasStoppedAtOnce) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        while (!obexProxy.IsRunning()) std::this_thread::yield();
        obexProxy.StopThreads();
        obexProxy.AwaitMenuThread(start_lock);
        Say("started");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"started"}) + Banner());
}

TEST(StartHandshakeTest, EndsWhenTheMenuThreadHasRunAlready) {
    const std::string output = OutputOf([] {
        std::thread([] { obexProxy.MenuThread(); }).join();
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        obexProxy.AwaitMenuThread(start_lock);
        Say(obexProxy.IsRunning() ? "running" : "stopped");
    });
    EXPECT_EQ(output, Banner() + Prompt() + Lines({"stopped"}));
}

// Else its signal could fall between the main thread's look and its wait.
TEST(StartHandshakeTest, TheMenuThreadWaitsForTheMainThreadToWait) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        Rival menu_thread([] { obexProxy.MenuThread(); });
        sleep_substitute = [](useconds_t /*time*/) { Say("pause"); };
        menu_thread.GoAsFarAsPossible();
        Say("not yet waiting");
        obexProxy.AwaitMenuThread(start_lock);
    });
    const std::string pause = Lines({"pause"});
    EXPECT_EQ(output, Lines({"not yet waiting"}) + pause + Banner() + pause + Prompt());
}

TEST(StartHandshakeTest, WaitsForTheMenuThread) {
    const std::string output = OutputOf([] {
        std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
        Say(obexProxy.IsRunning() ? "running" : "not yet");
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        obexProxy.AwaitMenuThread(start_lock);
        Say(obexProxy.IsRunning() ? "running" : "not yet");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"not yet", "running"}) + Banner() + Prompt());
}

// What this finds is a race; ThreadSanitizer tells.
TEST(StopThreadsTest, MayComeWhileTheMainLoopIsMade) {
    const std::string output = OutputOf([] {
        obexProxy.DBusInstance("7");
        std::thread other([] {
            for (int count = 0; count < 1000; ++count) obexProxy.StopThreads();
        });
        obexProxy.GDBusRun();
        other.join();
    });
    EXPECT_EQ(output, Red("Error getting object manager client\n"));
}

// After the first Ctrl-C the next has its usual meaning.
TEST(TerminationHandlerTest, StopsTheMenusAndRemovesItself) {
    const std::string output = OutputOf([] {
        std::thread menu_thread([] { obexProxy.MenuThread(); });
        while (!obexProxy.IsRunning()) std::this_thread::yield();
        Say(terminationHandler(nullptr) == G_SOURCE_REMOVE ? "removed" : "stays");
        Say(obexProxy.IsRunning() ? "running" : "stopped");
        menu_thread.join();
    });
    EXPECT_EQ(output, Lines({"removed", "stopped"}) + Banner());
}

}  // namespace
}  // namespace morvane
