#include "simulator/simulator_fixture.h"

#include <tuple>
#include <utility>

namespace simulator {
namespace {

using std::string;

class SimulatorSession : public SimulatorTest {};

TEST_F(SimulatorSession, IsRefusedForUnknownDevicesAndOtherServices) {
    Start(Quick());
    EXPECT_EQ(CreateSession("02:00:5E:10:00:77"),
              Error("DoesNotExist", "No such device: 02:00:5E:10:00:77"));
    const std::pair<const char*, string> refusals[] = {
        {"@a{sv} {}", InvalidArguments("Argument Target of type s is missing")},
        {"{'Target': <uint32 1>}", InvalidArguments("Argument Target of type s is missing")},
        {"{'Target': <'1132'>}", Error("NotSupported", "Target is not supported: 1132")},
        {"{'Speed': <'high'>}", InvalidArguments("Unknown argument: Speed")},
    };
    for (const auto& [arguments, refusal] : refusals)
        EXPECT_EQ(client().Call(kClientPath, "obex.Client1.CreateSession",
                                string("('02:00:5E:10:00:01', ") + arguments + ")"),
                  refusal);
    EXPECT_TRUE(daemon().Sessions().empty());
}

TEST_F(SimulatorSession, KeepsTheSelectionIfThePhoneBookDoesNotExist) {
    StartSession(Quick());
    EXPECT_EQ(Access("GetSize"), Error("Forbidden", "No phone book selected"));
    EXPECT_EQ(Access("Select", "('sim2', 'mch')"), "()");
    EXPECT_EQ(Access("Select", "('int', 'fav')"), "()");
    EXPECT_EQ(Access("Select", "('card', 'pb')"), InvalidArguments("Unknown location: card"));
    EXPECT_EQ(Access("Select", "('int', 'xyz')"),
              InvalidArguments("No such phone book: xyz in int"));
    EXPECT_EQ(Access("Select", "('sim1', 'spd')"),
              InvalidArguments("No such phone book: spd in sim1"));
    EXPECT_EQ(Access("GetSize"), "(uint16 5,)");
}

TEST_F(SimulatorSession, AnnouncesTheFolderOnlyIfItChanges) {
    StartSession(Quick());
    Access("Select", "('sim1', 'pb')");
    const string folder = Changed(kSession, kAccess, "'Folder': <'SIM1/telecom/pb'>");
    client().AwaitSignal(folder);
    EXPECT_EQ(client().Get(kSession, kAccess, "Folder"), "(<'SIM1/telecom/pb'>,)");
    Access("Select", "('sim1', 'pb')");
    Access("Select", "('int', 'pb')");
    client().AwaitSignal(Changed(kSession, kAccess, "'Folder': <'telecom/pb'>"));
    EXPECT_EQ(client().TakeSignals(), Signals{});
}

TEST_F(SimulatorSession, UpdateVersionAnnouncesChangedCounters) {
    StartSession(Quick());
    EXPECT_EQ(client().Get(kSession, kAccess, "PrimaryCounter"), "(<''>,)");
    EXPECT_EQ(Access("UpdateVersion"), "()");
    const string one = string(31, '0') + "1";
    client().AwaitSignal(Changed(kSession, kAccess, "'PrimaryCounter': <'" + one + "'>"));
    client().AwaitSignal(Changed(kSession, kAccess, "'SecondaryCounter': <'" + one + "'>"));
    daemon().AddContact(kPhone, "Ann Doe", "+12025550001");
    EXPECT_EQ(client().TakeSignals(), Signals{});
    Access("UpdateVersion");
    const string two = string(31, '0') + "2";
    client().AwaitSignal(Changed(kSession, kAccess, "'PrimaryCounter': <'" + two + "'>"));
}

TEST_F(SimulatorSession, AnnouncesMissedCallsWithSizesAndResetsThem) {
    StartSession(Quick());
    Access("Select", "('int', 'mch')");
    daemon().MissCall(kPhonePath, "+12025550002");
    Access("GetSize");
    client().AwaitSignal(Changed(kSession, kAccess, "'NewMissedCalls': <byte 0x03>"));
    Access("GetSizeListing", "(@a{sv} {'ResetNewMissedCalls': <true>},)");
    client().AwaitSignal(Changed(kSession, kAccess, "'NewMissedCalls': <byte 0x00>"));
}

TEST_F(SimulatorSession, ListsAndCountsEntriesThatMatchFilters) {
    StartSelected(ByHand());
    EXPECT_EQ(Access("List", "(@a{sv} {'MaxCount': <uint16 1>},)"),
              "([('0.vcf', 'Owner;Aster')],)");
    EXPECT_EQ(Access("List", "(@a{sv} {'Offset': <uint16 26>},)"), "(@a(ss) [],)");
    EXPECT_EQ(Access("GetSizePhonebook", "(@a{sv} {'FilterAll': <['SOUND']>},)"), "(uint16 25,)");
    EXPECT_EQ(Access("GetSizeListing", "(@a{sv} {'MaxCount': <uint16 1>},)"),
              InvalidArguments("Filter not allowed here: MaxCount"));
    EXPECT_EQ(client().Get(kSession, kAccess, "ProfileVersion"), "(<uint16 258>,)");
}

TEST_F(SimulatorSession, RefusesCallsWhenDisconnectedAndCanBeClosedByThePhone) {
    StartSelected(ByHand());
    daemon().SetConnectionState(kSession, 3);
    EXPECT_EQ(Access("GetSize"), Error("NotConnected", "Session is not connected"));
    daemon().CloseSession(kSession);
    EXPECT_EQ(client().TakeSignals(),
              (Signals{Changed(kSession, "obex.Session1", "'ConnectionState': <byte 0x03>"),
                       Changed(kSession, "obex.Session1", "'ConnectionState': <byte 0x00>"),
                       "/ InterfacesRemoved(objectpath '" + string(kSession) +
                           "', ['com.veltrisonix.obex.PhonebookAccess1', "
                           "'com.veltrisonix.obex.Session1'])"}));
    EXPECT_THROW(daemon().CloseSession(kSession), std::runtime_error);
}

TEST_F(SimulatorSession, EndsWhenItsPhoneIsRemoved) {
    StartSelected(ByHand());
    daemon().RemoveDevice(kPhone);
    const Signals signals = client().TakeSignals();
    ASSERT_EQ(signals.size(), 3U);
    EXPECT_EQ(signals[0], Changed(kSession, "obex.Session1", "'ConnectionState': <byte 0x00>"));
    EXPECT_EQ(signals[2], "/ InterfacesRemoved(objectpath '" + string(kPhonePath) +
                              "', ['com.veltrisonix.Device1'])");
    EXPECT_NE(CreateSession().find("DoesNotExist"), string::npos);
    daemon().ReturnDevice(kPhonePath);
    EXPECT_EQ(CreateSession(), "(objectpath '/com/veltrisonix/obex/client/session1',)");
}

TEST_F(SimulatorSession, EndsWithoutNotificationWhenClientIsRemoved) {
    StartSelected(ByHand());
    daemon().RemoveClient();
    const Signals signals = client().TakeSignals();
    ASSERT_EQ(signals.size(), 2U);
    EXPECT_EQ(signals[0],
              "/ InterfacesRemoved(objectpath '/com/veltrisonix/obex', "
              "['com.veltrisonix.obex.Client1'])");
    EXPECT_NE(CreateSession().find("DBus.Error.UnknownMethod"), string::npos);
    daemon().AddClient();
    EXPECT_EQ(CreateSession(), "(objectpath '/com/veltrisonix/obex/client/session1',)");
}

TEST_F(SimulatorSession, ScriptedDeviceHasExactlyItsProperties) {
    Start(Options::Scripted());
    const string path = "/com/veltrisonix/hci0/dev_1";
    daemon().AddDevice(path, g_variant_new_parsed("{'Shoe': <'left'>, 'Address': <uint32 5>}"));
    EXPECT_EQ(client().TakeSignals(), Signals{"/ InterfacesAdded(objectpath '" + path +
                                              "', {'com.veltrisonix.Device1': {'Shoe': <'left'>, "
                                              "'Address': <uint32 5>}})"});
    EXPECT_EQ(client().GetAll(path, "Device1"), "({'Shoe': <'left'>, 'Address': <uint32 5>},)");
    EXPECT_EQ(client().Get(path, "Device1", "Shoe"), "(<'left'>,)");
    EXPECT_NE(client().Get(path, "Device1", "Alias").find("No such property"), string::npos);
    EXPECT_THROW(daemon().AddDevice(path, "00:00:00:00:00:01", "again"), std::runtime_error);
    daemon().RemoveDevice(path);
    daemon().AddDevice(path, "00:00:00:00:00:01", "now in earnest");
    EXPECT_EQ(client().Get(path, "Device1", "Alias"), "(<'now in earnest'>,)");
    EXPECT_EQ(CreateSession("00:00:00:00:00:01"), "(objectpath '" + string(kSession) + "',)");
}

TEST_F(SimulatorSession, DeviceImplementsItsMethods) {
    StartSession(ByHand());
    const std::tuple<const char*, const char*, string> calls[] = {
        {"Disconnect", "()", Error("NotConnected", "Device is not connected")},
        {"Connect", "()", "()"},
        {"SetSniffModeTimer", "(uint16 9, uint16 5, uint16 1, uint16 1, uint32 77)", "()"},
        {"GetSniffModeTimer", "()", "(uint32 77,)"},
        {"ClearSniffModeTimer", "()", "()"},
        {"GetSniffModeTimer", "()", "(uint32 0,)"},
        {"ConnectProfile", "('1234',)", Error("NotSupported", "No such service: 1234")},
        {"Disconnect", "()", "()"},
    };
    for (const auto& [method, arguments, reply] : calls)
        EXPECT_EQ(client().Call(kPhonePath, string("Device1.") + method, arguments), reply);
    EXPECT_TRUE(daemon().Sessions().empty());
}

}  // namespace
}  // namespace simulator
