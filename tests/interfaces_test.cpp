#include "device1.h"
#include "obex-client1.h"
#include "obex-phonebook-access1.h"
#include "obex-session1.h"
#include "obex-transfer1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

// The simulator is built from the same descriptions as the tool. No conversation would notice one
// that says something else than the daemon does, so all that they promise stands here once more.

using Texts = std::vector<std::string>;

template <typename Info>
std::string Declaration(const Info& info) {
    return std::string(info.name) + " " + info.signature;
}

std::string Arguments(GDBusArgInfo* const* arguments) {
    std::string text;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        text += (text.empty() ? "" : ", ") + Declaration(**arguments);
    return "(" + text + ")";
}

Texts Methods(const GDBusInterfaceInfo& interface) {
    Texts methods;
    for (GDBusMethodInfo* const* method = interface.methods; *method != nullptr; ++method)
        methods.push_back((*method)->name + Arguments((*method)->in_args) + " = " +
                          Arguments((*method)->out_args));
    return methods;
}

std::string Describe(const GDBusPropertyInfo& property) {
    const char* const announced = g_dbus_annotation_info_lookup(
        property.annotations, "org.freedesktop.DBus.Property.EmitsChangedSignal");
    return Declaration(property) +
           ((property.flags & G_DBUS_PROPERTY_INFO_FLAGS_READABLE) != 0 ? " read" : "") +
           ((property.flags & G_DBUS_PROPERTY_INFO_FLAGS_WRITABLE) != 0 ? " write" : "") +
           (announced == nullptr ? "" : std::string(" announced=") + announced);
}

Texts Properties(const GDBusInterfaceInfo& interface) {
    Texts properties;
    GDBusPropertyInfo* const* property = interface.properties;
    for (; property != nullptr && *property != nullptr; ++property)
        properties.push_back(Describe(**property));
    return properties;
}

// The properties of a proxy, sorted: their names in notifications and the types of their getters.
Texts ProxyProperties(GType interface_type) {
    g_type_class_unref(g_type_class_ref(G_TYPE_OBJECT));  // before it GLib knows no properties
    const gpointer interface = g_type_default_interface_ref(interface_type);
    guint count = 0;
    GParamSpec** const all = g_object_interface_list_properties(interface, &count);
    Texts properties;
    for (guint i = 0; i < count; ++i)
        properties.push_back(std::string(all[i]->name) + " " + g_type_name(all[i]->value_type));
    g_free(all);
    g_type_default_interface_unref(interface);
    std::sort(properties.begin(), properties.end());
    return properties;
}

TEST(InterfacesTest, ClientOpensAndClosesSessions) {
    const GDBusInterfaceInfo& interface = *obex_client1_interface_info();
    EXPECT_STREQ(interface.name, "com.veltrisonix.obex.Client1");
    EXPECT_EQ(Methods(interface),
              (Texts{"CreateSession(destination s, args a{sv}) = (session o)",
                     "RemoveSession(session o) = ()", "SetUserId(userId s) = ()",
                     "SetPassword(password s) = ()"}));
    EXPECT_EQ(Properties(interface), Texts{});
    EXPECT_EQ(interface.signals, nullptr);
}

TEST(InterfacesTest, SessionTellsItsEnds) {
    const GDBusInterfaceInfo& interface = *obex_session1_interface_info();
    EXPECT_STREQ(interface.name, "com.veltrisonix.obex.Session1");
    EXPECT_EQ(Methods(interface), Texts{"GetCapabilities() = (capabilities s)"});
    EXPECT_EQ(Properties(interface),
              (Texts{"Source s read", "Destination s read", "Channel q read", "Target s read",
                     "Root s read", "ConnectionState y read"}));
    EXPECT_EQ(ProxyProperties(TYPE_OBEX_SESSION1),
              (Texts{"channel guint", "connection-state guchar", "destination gchararray",
                     "root gchararray", "source gchararray", "target gchararray"}));
    EXPECT_EQ(interface.signals, nullptr);
}

TEST(InterfacesTest, PhonebookAnnouncesNoChangeByPromise) {
    const GDBusInterfaceInfo& interface = *obex_phonebook_access1_interface_info();
    EXPECT_STREQ(interface.name, "com.veltrisonix.obex.PhonebookAccess1");
    EXPECT_EQ(Methods(interface),
              (Texts{"Select(location s, phonebook s) = ()",
                     "PullAll(targetfile s, filters a{sv}) = (transfer o, properties a{sv})",
                     "Pull(vcard s, targetfile s, filters a{sv}) = (transfer o, properties a{sv})",
                     "List(filters a{sv}) = (vcard_listing a(ss))",
                     "Search(field s, value s, filters a{sv}) = (vcard_listing a(ss))",
                     "GetSize() = (size q)", "ListFilterFields() = (fields as)",
                     "UpdateVersion() = ()", "GetSizePhonebook(_filter a{sv}) = (_size q)",
                     "GetSizeListing(_filter a{sv}) = (_size q)"}));
    EXPECT_EQ(
        Properties(interface),
        (Texts{"Folder s read announced=false", "DatabaseIdentifier s read announced=false",
               "PrimaryCounter s read announced=false", "SecondaryCounter s read announced=false",
               "FixedImageSize b read announced=false", "NewMissedCalls y read announced=false",
               "ProfileVersion q read announced=false",
               "SupportedPhonebooks y read announced=false",
               "SupportedFeatures u read announced=false"}));
    EXPECT_EQ(ProxyProperties(TYPE_OBEX_PHONEBOOK_ACCESS1),
              (Texts{"database-identifier gchararray", "fixed-image-size gboolean",
                     "folder gchararray", "new-missed-calls guchar", "primary-counter gchararray",
                     "profile-version guint", "secondary-counter gchararray",
                     "supported-features guint", "supported-phonebooks guchar"}));
    EXPECT_EQ(interface.signals, nullptr);
}

TEST(InterfacesTest, TransferTellsHowFarItIs) {
    const GDBusInterfaceInfo& interface = *obex_transfer1_interface_info();
    EXPECT_STREQ(interface.name, "com.veltrisonix.obex.Transfer1");
    EXPECT_EQ(Methods(interface), (Texts{"Suspend() = ()", "Resume() = ()", "Cancel() = ()"}));
    EXPECT_EQ(Properties(interface),
              (Texts{"Status s read", "Name s read", "Size t read", "Filename s read",
                     "Transferred t read", "Session o read", "Type s read"}));
    EXPECT_EQ(ProxyProperties(TYPE_OBEX_TRANSFER1),
              (Texts{"filename gchararray", "name gchararray", "session gchararray", "size guint64",
                     "status gchararray", "transferred guint64", "type gchararray"}));
    EXPECT_EQ(interface.signals, nullptr);
}

TEST(InterfacesTest, DeviceIsDescribedWhole) {
    const GDBusInterfaceInfo& interface = *device1_interface_info();
    EXPECT_STREQ(interface.name, "com.veltrisonix.Device1");
    EXPECT_EQ(Methods(interface),
              (Texts{"Connect() = ()", "Disconnect() = ()", "ConnectProfile(UUID s) = ()",
                     "DisconnectProfile(UUID s) = ()", "Pair() = ()", "CancelPairing() = ()",
                     "SetSniffModeTimer(MaxInterval q, MinInterval q, Attempt q, Timeout q, "
                     "Time u) = ()",
                     "GetSniffModeTimer() = (Time u)", "ClearSniffModeTimer() = ()",
                     "DisableSniffModeTimer() = ()", "SwitchRole() = ()", "RefreshRssi() = ()"}));
    EXPECT_EQ(Properties(interface), (Texts{"Address s read",
                                            "AddressType s read",
                                            "Name s read",
                                            "Alias s read write",
                                            "Class u read",
                                            "Paired b read",
                                            "Pairing b read",
                                            "Connecting b read",
                                            "SniffExitPolicy q read write",
                                            "Sniff b read",
                                            "Role s read",
                                            "RadioCapability s read",
                                            "RadiosPaired s read",
                                            "DisconnectReason u read",
                                            "Trusted b read write",
                                            "Blocked b read write",
                                            "LegacyPairing b read",
                                            "RSSI n read",
                                            "Connected b read",
                                            "UUIDs as read",
                                            "Adapter o read",
                                            "ServicesResolved b read",
                                            "AdvertData ay read"}));
    EXPECT_EQ(interface.signals, nullptr);
}

// Bytes of an advertisement are no text: they are handed on as the value that they came in.
TEST(InterfacesTest, DeviceHasItsNamesAndTypes) {
    EXPECT_EQ(ProxyProperties(TYPE_DEVICE1), (Texts{"adapter gchararray",
                                                    "address gchararray",
                                                    "address-type gchararray",
                                                    "advert-data GVariant",
                                                    "alias gchararray",
                                                    "blocked gboolean",
                                                    "class guint",
                                                    "connected gboolean",
                                                    "connecting gboolean",
                                                    "disconnect-reason guint",
                                                    "legacy-pairing gboolean",
                                                    "name gchararray",
                                                    "paired gboolean",
                                                    "pairing gboolean",
                                                    "radio-capability gchararray",
                                                    "radios-paired gchararray",
                                                    "role gchararray",
                                                    "rssi gint",
                                                    "services-resolved gboolean",
                                                    "sniff gboolean",
                                                    "sniff-exit-policy guint",
                                                    "trusted gboolean",
                                                    "uuids GStrv"}));
}

}  // namespace
}  // namespace morvane_test
