#include "simulator/daemon.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

struct DeviceRow {
    const char* path;
    const char* properties;
    const char* line;
};

// Properties of a device, and the line for it.
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

class DevicesTest : public ConversationTest {
  protected:
    void StartWithoutDevices() {
        StartDaemon();
        Start();
        console().AllowStderr("WARNING .* Received property (Address|Alias) with type [bu] does");
    }

    void Add(const std::string& path, const std::string& properties) {
        daemon().AddDevice(path, Value(properties));
        Expect(Notification("", "Found Device " + path + "\n"));
        ExpectNoOutput();
    }

    void Announce(const std::string& property, const std::string& value) {
        daemon().Notify("/dev_1", simulator::kDeviceInterface, property, Value(value));
        ExpectNoOutput();
    }
};

TEST_F(DevicesTest, DisplaysAddressAndAlias) {
    StartWithoutDevices();
    std::vector<std::string> lines;
    for (const DeviceRow& row : kRows) {
        Add(row.path, row.properties);
        lines.emplace_back(row.line);
    }
    ExpectList(lines);
    Enter("c", DeviceBox(lines) + Prompt(PromptId::kDevice));
    Enter("x", Red("Invalid Client selected\n") + Prompt());
}

TEST_F(DevicesTest, DisplaysLatestProperties) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Old'>}");
    Announce("Alias", "'New'");
    Announce("Address", "'00:11:22:33:44:66'");
    ExpectList({"00:11:22:33:44:66 | New"});
    Announce("Alias", "uint32 7");
    daemon().Invalidate("/dev_1", simulator::kDeviceInterface, "Address");
    ExpectNoOutput();
    ExpectList({"Unknown | New"});
    Announce("Address", "'00:11:22:33:44:77'");
    Announce("Name", "'A name is no alias'");
    ExpectList({"00:11:22:33:44:77 | New"});
}

TEST_F(DevicesTest, DisplaysDevicesFromCacheWithoutCalls) {
    StartWithoutDevices();
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Phone'>}");
    for (const char* const method : {"Get", "GetAll", "GetManagedObjects"}) daemon().Hang(method);
    ExpectList({"00:11:22:33:44:55 | Phone"});
    Enter("c", DeviceBox({"00:11:22:33:44:55 | Phone"}) + Prompt(PromptId::kDevice));
    EXPECT_TRUE(daemon().Calls().empty());
    daemon().Release();
    Enter("9", Red("Invalid Client selected\n") + Prompt());
}

// The device is registered: its properties may arrive later.
TEST_F(DevicesTest, KeepsDeviceWhosePropertiesCannotBeRead) {
    StartWithoutDevices();
    daemon().Refuse("GetAll", "com.veltrisonix.Error.Failed", "No", 1);
    Add("/dev_1", "{'Address': <'00:11:22:33:44:55'>, 'Alias': <'Phone'>}");
    ExpectList({"Unknown | Unknown"});
    Announce("Alias", "'Late'");
    ExpectList({"Unknown | Late"});
}

}  // namespace
}  // namespace morvane_test
