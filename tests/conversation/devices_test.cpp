#include "simulator/daemon.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <future>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

struct DeviceRow {
    const char* path;
    const char* properties;
    const char* line;
};

// What a daemon may say of a device, and its line.
constexpr DeviceRow kRows[] = {
    {"/dev_plain", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Plain'>, 'Name': <'Other'>}",
     "00:11:22:33:44:55 | Plain"},
    {"/dev_same", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Same address'>}",
     "00:11:22:33:44:55 | Same address"},
    {"/dev_empty", "{'Address': <'00:11:22:33:44:02'>, 'Alias': <''>}", "00:11:22:33:44:02 | "},
    {"/dev_format", "{'Address': <'100%s'>, 'Alias': <'50 % off %n'>}", "100%s | 50 % off %n"},
    {"/dev_far", "{'Address': <'00:11:22:33:44:04'>, 'Alias': <'Телефон'>}",
     "00:11:22:33:44:04 | Телефон"},
    {"/dev_nameless", "{'Address': <'00:11:22:33:44:05'>}", "00:11:22:33:44:05 | Unknown"},
    {"/dev_wrong", "{'Address': <uint32 5>, 'Alias': <true>}", "Unknown | Unknown"},
    {"/dev_bare", "@a{sv} {}", "Unknown | Unknown"},
};

std::string Question(const std::vector<std::string>& devices) {
    return DeviceBox(devices) + ValuePrompt("/Select Device");
}

class DevicesTest : public ConversationTest {
  protected:
    void StartWithoutDevices() {
        StartDaemon();
        Start();
        console().AllowStderr("WARNING .* Received property (Address|Alias) with type [bu] does");
    }

    void Add(const std::string& path, const std::string& properties) {
        daemon().AddDevice(path, Value(properties));
        Expect(Notice("", "Found Device " + path + "\n"));
        ExpectQuiet();
    }

    void Announce(const std::string& property, const std::string& value) {
        daemon().Notify("/dev_1", simulator::kDeviceInterface, property, Value(value));
        ExpectQuiet();
    }
};

TEST_F(DevicesTest, ShowsAddressAndAlias) {
    StartWithoutDevices();
    std::vector<std::string> lines;
    for (const DeviceRow& row : kRows) {
        Add(row.path, row.properties);
        lines.emplace_back(row.line);
    }
    Type("l");
    Expect(DeviceList(lines) + Prompt());
    Type("c");
    Expect(Question(lines));
    Type("x");
    Expect(Red("Invalid Client selected\n") + Prompt());
}

TEST_F(DevicesTest, NumbersTwoDevicesOfOneAddressApart) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'One'>}");
    Add("/dev_2", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Two'>}");
    Add("/dev_3", "{'Address': <'00:11:22:33:44:66'>, 'Alias': <'Three'>}");
    RemoveDevice("/dev_1");
    daemon().Refuse("CreateSession", "com.veltrisonix.Error.Failed", "No");
    for (const char* const address : {"00:11:22:33:44:55", "00:11:22:33:44:66"}) {
        Type("c");
        Expect(Question({"00:11:22:33:44:55 | Two", "00:11:22:33:44:66 | Three"}));
        Type(address == std::string("00:11:22:33:44:55") ? "0" : "1");
        ExpectCall("CreateSession", "('" + std::string(address) +
                                        "', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
        Await(Prompt());
    }
}

TEST_F(DevicesTest, ShowsWhatTheDaemonAnnouncedLast) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Old'>}");
    Announce("Alias", "'New'");
    Announce("Address", "'00:11:22:33:44:66'");
    Type("l");
    Expect(DeviceList({"00:11:22:33:44:66 | New"}) + Prompt());
    Announce("Alias", "uint32 7");
    daemon().Invalidate("/dev_1", simulator::kDeviceInterface, "Address");
    ExpectQuiet();
    Type("l");
    Expect(DeviceList({"Unknown | New"}) + Prompt());
    Announce("Address", "'00:11:22:33:44:77'");
    Announce("Name", "'A name is no alias'");
    Type("l");
    Expect(DeviceList({"00:11:22:33:44:77 | New"}) + Prompt());
}

TEST_F(DevicesTest, AsksTheDaemonNothingToShowADevice) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Phone'>}");
    for (const char* const method : {"Get", "GetAll", "GetManagedObjects"}) daemon().Hang(method);
    Type("l");
    Expect(DeviceList({"00:11:22:33:44:55 | Phone"}) + Prompt());
    Type("c");
    Expect(Question({"00:11:22:33:44:55 | Phone"}));
    EXPECT_TRUE(daemon().Calls().empty());
    daemon().Release();
    Type("9");
    Expect(Red("Invalid Client selected\n") + Prompt());
}

// Such a device is in the registry all the same: its properties may still come.
TEST_F(DevicesTest, KeepsADeviceWhosePropertiesCannotBeRead) {
    StartWithoutDevices();
    daemon().Refuse("GetAll", "com.veltrisonix.Error.Failed", "No", 1);
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Phone'>}");
    Type("l");
    Expect(DeviceList({"Unknown | Unknown"}) + Prompt());
    Announce("Alias", "'Late'");
    Type("l");
    Expect(DeviceList({"Unknown | Late"}) + Prompt());
}

// A session cannot be asked for without an address, and a daemon that gives none is broken.
TEST_F(DevicesTest, EndsWhenADeviceWithoutAddressIsChosen) {
    StartWithoutDevices();
    Add("/dev_1", "{'Alias': <'Nowhere'>}");
    Type("c");
    Expect(Question({"Unknown | Nowhere"}));
    Type("0");
    console().AllowStderr("^terminate called after throwing an instance of 'std::logic_error'$");
    console().AllowStderr("^  what\\(\\):  .*null");
    console().ExpectEndBySignal(SIGABRT);
    EXPECT_EQ(CountCalls("CreateSession"), 0U);
}

// The main thread may drop a text while the menu thread prints it.
TEST_F(DevicesTest, ListsDevicesWhoseAliasKeepsChanging) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Name 0 of many'>}");
    const auto flood = std::async(std::launch::async, [this] {
        daemon().Flood("/dev_1", simulator::kDeviceInterface, "Alias", 20000, [](std::size_t i) {
            return g_variant_new_take_string(g_strdup_printf("Name %zu of many", i));
        });
    });
    for (int round = 0; round < 5; ++round) {
        Type("l");
        Expect(Stars() + kResetSequence + " 00:11:22:33:44:55 | Name ");
        Await(" of many\n" + (kResetSequence + Stars()) + Prompt());
    }
}

}  // namespace
}  // namespace morvane_test
