#include "device1.h"
#include "obex-client1.h"
#include "obex-phonebook-access1.h"
#include "obex-session1.h"
#include "obex-transfer1.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

// The tool and the simulator use the same interface descriptions. Conversations cannot detect that
// one differs from the real daemon's, so the descriptions are repeated here.

std::string Arguments(GDBusArgInfo* const* arguments) {
    std::string text;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        text += (text.empty() ? "" : ", ") + std::string((*arguments)->name) + " " +
                (*arguments)->signature;
    return "(" + text + ")";
}

std::string Describe(const GDBusPropertyInfo& property) {
    const char* const announced = g_dbus_annotation_info_lookup(
        property.annotations, "org.freedesktop.DBus.Property.EmitsChangedSignal");
    return std::string(property.signature) + " " + property.name +
           ((property.flags & G_DBUS_PROPERTY_INFO_FLAGS_READABLE) != 0 ? "" : " unreadable") +
           ((property.flags & G_DBUS_PROPERTY_INFO_FLAGS_WRITABLE) != 0 ? " writable" : "") +
           (announced == nullptr ? "" : std::string(" announced=") + announced) + "\n";
}

// One line for the name, each method and each property.
std::string Describe(const GDBusInterfaceInfo* interface) {
    std::string text = std::string(interface->name) + "\n";
    for (GDBusMethodInfo* const* method = interface->methods; *method != nullptr; ++method)
        text += (*method)->name + Arguments((*method)->in_args) + " = " +
                Arguments((*method)->out_args) + "\n";
    GDBusPropertyInfo* const* property = interface->properties;
    for (; property != nullptr && *property != nullptr; ++property) text += Describe(**property);
    return text + (interface->signals == nullptr ? "" : "signals\n");
}

constexpr char kClientMembers[] = R"(com.veltrisonix.obex.Client1
CreateSession(destination s, args a{sv}) = (session o)
RemoveSession(session o) = ()
SetUserId(userId s) = ()
SetPassword(password s) = ()
)";

constexpr char kSessionMembers[] = R"(com.veltrisonix.obex.Session1
GetCapabilities() = (capabilities s)
s Source
s Destination
q Channel
s Target
s Root
y ConnectionState
)";

constexpr char kPhonebookAccessMembers[] = R"(com.veltrisonix.obex.PhonebookAccess1
Select(location s, phonebook s) = ()
PullAll(targetfile s, filters a{sv}) = (transfer o, properties a{sv})
Pull(vcard s, targetfile s, filters a{sv}) = (transfer o, properties a{sv})
List(filters a{sv}) = (vcard_listing a(ss))
Search(field s, value s, filters a{sv}) = (vcard_listing a(ss))
GetSize() = (size q)
ListFilterFields() = (fields as)
UpdateVersion() = ()
GetSizePhonebook(_filter a{sv}) = (_size q)
GetSizeListing(_filter a{sv}) = (_size q)
s Folder announced=false
s DatabaseIdentifier announced=false
s PrimaryCounter announced=false
s SecondaryCounter announced=false
b FixedImageSize announced=false
y NewMissedCalls announced=false
q ProfileVersion announced=false
y SupportedPhonebooks announced=false
u SupportedFeatures announced=false
)";

constexpr char kTransferMembers[] = R"(com.veltrisonix.obex.Transfer1
Suspend() = ()
Resume() = ()
Cancel() = ()
s Status
s Name
t Size
s Filename
t Transferred
o Session
s Type
)";

constexpr char kDeviceMembers[] = R"(com.veltrisonix.Device1
Connect() = ()
Disconnect() = ()
ConnectProfile(UUID s) = ()
DisconnectProfile(UUID s) = ()
Pair() = ()
CancelPairing() = ()
SetSniffModeTimer(MaxInterval q, MinInterval q, Attempt q, Timeout q, Time u) = ()
GetSniffModeTimer() = (Time u)
ClearSniffModeTimer() = ()
DisableSniffModeTimer() = ()
SwitchRole() = ()
RefreshRssi() = ()
s Address
s AddressType
s Name
s Alias writable
u Class
b Paired
b Pairing
b Connecting
q SniffExitPolicy writable
b Sniff
s Role
s RadioCapability
s RadiosPaired
u DisconnectReason
b Trusted writable
b Blocked writable
b LegacyPairing
n RSSI
b Connected
as UUIDs
o Adapter
b ServicesResolved
ay AdvertData
)";

TEST(InterfacesTest, MatchTheDaemon) {
    EXPECT_EQ(Describe(obex_client1_interface_info()), kClientMembers);
    EXPECT_EQ(Describe(obex_session1_interface_info()), kSessionMembers);
    EXPECT_EQ(Describe(obex_phonebook_access1_interface_info()), kPhonebookAccessMembers);
    EXPECT_EQ(Describe(obex_transfer1_interface_info()), kTransferMembers);
    EXPECT_EQ(Describe(device1_interface_info()), kDeviceMembers);
}

}  // namespace
}  // namespace morvane_test
