#include "support/conversation.h"

#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kPhonebookInterface;
using simulator::kSessionInterface;

struct Change {
    const char* interface;
    const char* property;
    const char* value;
    const char* line;
};

class SessionNotifications : public ConversationTest {
  protected:
    void SetUp() override { OpenSession(); }

    void Notify(const char* interface, const char* property, const std::string& value) {
        daemon().Notify(Session(), interface, property, Value(value));
    }

    void ExpectLine(const std::string& line, Here here = Here::Now()) {
        Expect(Notification(kPhonebookMenu, line + "\n"), here);
    }

    // Sends each change twice: a message is printed for an unchanged value, too.
    void ExpectLines(const std::vector<Change>& changes, Here here = Here::Now()) {
        for (const Change& change : changes) {
            for (int repetition = 0; repetition < 2; ++repetition) {
                Notify(change.interface, change.property, change.value);
                ExpectLine(change.line, here);
            }
        }
    }
};

TEST_F(SessionNotifications, ReportEveryProperty) {
    ExpectLines({
        {kSessionInterface, "Source", "'11:22'", "Source Attribute Received: 11:22"},
        {kSessionInterface, "Source", "''", "Source Attribute Received: "},
        {kSessionInterface, "Destination", "'33:44'", "Destination Attribute Received: 33:44"},
        {kSessionInterface, "Channel", "uint16 0", "Channel Attribute Received: 0"},
        {kSessionInterface, "Channel", "uint16 65535", "Channel Attribute Received: 65535"},
        {kSessionInterface, "Target", "'uuid'", "Target Attribute Received: uuid"},
        {kPhonebookInterface, "DatabaseIdentifier", "'ABC'", "Database Identifier: ABC"},
        {kPhonebookInterface, "PrimaryCounter", "'12'", "Primary Counter: 12"},
        {kPhonebookInterface, "SecondaryCounter", "'13'", "Secondary Counter: 13"},
        {kPhonebookInterface, "NewMissedCalls", "byte 255", "New Missed Calls: 255"},
        {kPhonebookInterface, "NewMissedCalls", "byte 0", "New Missed Calls: 0"},
        {kPhonebookInterface, "Folder", "'telecom/pb'", "Folder: telecom/pb"},
        {kPhonebookInterface, "Folder", "'100 %s %n Ä'", "Folder: 100 %s %n Ä"},
        {kPhonebookInterface, "FixedImageSize", "true", "Fixed Image Size: Supported"},
        {kPhonebookInterface, "FixedImageSize", "false", "Fixed Image Size: Not Supported"},
        {kPhonebookInterface, "ProfileVersion", "uint16 0x0102", "Profile Version: 1.2"},
        {kPhonebookInterface, "ProfileVersion", "uint16 0x010a", "Profile Version: 1.a"},
        {kPhonebookInterface, "ProfileVersion", "uint16 0xfe0d", "Profile Version: fe.d"},
        {kPhonebookInterface, "ProfileVersion", "uint16 0x1012", "Profile Version: 10.12"},
        {kPhonebookInterface, "SupportedFeatures", "uint32 0x3ff", "Supported Features: 3ff"},
        {kPhonebookInterface, "SupportedFeatures", "uint32 0xfedcba98",
         "Supported Features: fedcba98"},
    });
}

TEST_F(SessionNotifications, ListSupportedPhonebooksInFixedOrder) {
    const std::vector<std::string> names = {
        "Server supports Local Phonebook", "Server supports SIM Phonebook",
        "Server supports Speed Dial Phonebook", "Server supports Favorites Phonebook"};
    for (std::size_t bit = 0; bit < names.size(); ++bit) {
        Notify(kPhonebookInterface, "SupportedPhonebooks", "byte " + std::to_string(1 << bit));
        ExpectLine(names[bit]);
    }
    for (const char* const all : {"byte 0x0f", "byte 0xff"}) {
        Notify(kPhonebookInterface, "SupportedPhonebooks", all);
        for (const std::string& name : names) ExpectLine(name);
    }
    for (const char* const none : {"byte 0", "byte 0xf0"}) {
        Notify(kPhonebookInterface, "SupportedPhonebooks", none);
        ExpectNoOutput(kPhonebookMenu);
    }
}

TEST_F(SessionNotifications, ReportEveryPropertyOfOneSignal) {
    daemon().NotifyAll(
        Session(), kPhonebookInterface,
        Value("{'Folder': <'f'>, 'SupportedPhonebooks': <byte 2>, 'PrimaryCounter': <'1'>}"));
    ExpectLine("Folder: f");
    ExpectLine("Server supports SIM Phonebook");
    ExpectLine("Primary Counter: 1");
}

// A value of a wrong type, and the message, which is that for a property without a value.
const std::vector<Change> kAbsent = {
    {kSessionInterface, "Source", "uint32 1", "Source Attribute Received: Unknown"},
    {kSessionInterface, "Destination", "uint32 1", "Destination Attribute Received: Unknown"},
    {kSessionInterface, "Channel", "'1'", "Channel Attribute Received: 0"},
    {kSessionInterface, "Target", "uint32 1", "Target Attribute Received: Unknown"},
    {kPhonebookInterface, "DatabaseIdentifier", "uint32 1", "Database Identifier: Unknown"},
    {kPhonebookInterface, "PrimaryCounter", "uint32 1", "Primary Counter: Unknown"},
    {kPhonebookInterface, "SecondaryCounter", "uint32 1", "Secondary Counter: Unknown"},
    {kPhonebookInterface, "NewMissedCalls", "uint32 1", "New Missed Calls: 0"},
    {kPhonebookInterface, "Folder", "uint32 1", "Folder: Unknown"},
    {kPhonebookInterface, "FixedImageSize", "uint32 1", "Fixed Image Size: Not Supported"},
    {kPhonebookInterface, "ProfileVersion", "uint32 1", "Profile Version: 0.0"},
    {kPhonebookInterface, "SupportedFeatures", "'1'", "Supported Features: 0"},
};

// GLib drops a value of another type; the tool only learns that the property changed.
TEST_F(SessionNotifications, ReportInvalidatedAndMistypedProperties) {
    console().AllowStderr("GLib-GIO-WARNING .* does not match expected type");
    Notify(kPhonebookInterface, "SupportedPhonebooks", "uint32 2");
    for (const char* const name : {"Local", "SIM", "Speed Dial", "Favorites"})
        ExpectLine(std::string("Server supports ") + name + " Phonebook");
    Notify(kSessionInterface, "Channel", "int16 3");
    ExpectLine("Channel Attribute Received: 19");
    for (const Change& change : kAbsent) {
        daemon().Invalidate(Session(), change.interface, change.property);
        ExpectLine(change.line);
        Notify(change.interface, change.property, change.value);
        ExpectLine(change.line);
    }
    daemon().Invalidate(Session(), kPhonebookInterface, "SupportedPhonebooks");
    ExpectNoOutput(kPhonebookMenu);
}

TEST_F(SessionNotifications, IgnoreOtherPropertiesAndObjects) {
    Notify(kSessionInterface, "Root", "'/new'");
    Notify(kSessionInterface, "ConnectionState", "byte 5");
    // The tool handles this property, which the interface does not have.
    Notify(kSessionInterface, "Connected", "true");
    Notify(kPhonebookInterface, "Unheard", "'of'");
    Notify(kPhonebookInterface, "Source", "'a session property'");
    Notify(kSessionInterface, "Folder", "'a phone book property'");
    daemon().Notify("/com/veltrisonix/obex/client/session1", kSessionInterface, "Source",
                    Value("'another session'"));
    ExpectNoOutput(kPhonebookMenu);
    Enter("u", Normal("Counters updated\n") + kPhonebookPrompt);
}

// The menu thread has the registry locked during the call; notifications need no lock.
TEST_F(SessionNotifications, ArePrintedDuringCall) {
    daemon().Hang("UpdateVersion");
    Type("u");
    ExpectCall("UpdateVersion", "()");
    Notify(kPhonebookInterface, "PrimaryCounter", "'2'");
    Expect(Normal("Primary Counter: 2\n"));
    Notify(kSessionInterface, "Target", "'t'");
    Expect(Normal("Target Attribute Received: t\n"));
    daemon().Release();
    Expect(Normal("Counters updated\n") + kPhonebookPrompt);
}

TEST_F(SessionNotifications, StopWithTheSession) {
    const std::string session = Session();
    Enter("x", Prompt());
    daemon().Notify(session, kPhonebookInterface, "Folder", Value("'f'"));
    daemon().Notify(session, kSessionInterface, "Source", Value("'s'"));
    ExpectNoOutput();
}

}  // namespace
}  // namespace morvane_test
