#include "phonebook/phonebook_context.h"

#include "app/obex_proxy.h"
#include "console/console_output.h"
#include "interfaces/property_notices.h"
#include "interfaces/remote_call.h"

namespace morvane {
namespace {

constexpr guchar kConnected = 5;

struct Repository {
    unsigned int bit;
    const char* name;
};

constexpr Repository kRepositories[] = {
    {0x01, "Local"}, {0x02, "SIM"}, {0x04, "Speed Dial"}, {0x08, "Favorites"}};

void ReportRepositories(ObexPhonebookAccess1* proxy, const char* label) {
    const unsigned int supported = obex_phonebook_access1_get_supported_phonebooks(proxy);
    for (const Repository& repository : kRepositories) {
        if ((supported & repository.bit) != 0) {
            PROXY_Print(kNormal, "%s %s Phonebook\n", label, repository.name);
        }
    }
}

void ReportConnection(ObexSession1* proxy, const char* label) {
    const bool connected = obex_session1_get_connection_state(proxy) == kConnected;
    PROXY_Print(kNormal, "%s: %d %s\n", label, obex_session1_get_channel(proxy),
                connected ? "Connected" : "Disconnected");
}

void ReportFixedImageSize(ObexPhonebookAccess1* proxy, const char* label) {
    const bool supported = obex_phonebook_access1_get_fixed_image_size(proxy) != FALSE;
    PROXY_Print(kNormal, "%s: %s\n", label, supported ? "Supported" : "Not Supported");
}

void ReportVersion(ObexPhonebookAccess1* proxy, const char* label) {
    const unsigned int version = obex_phonebook_access1_get_profile_version(proxy);
    PROXY_Print(kNormal, "%s: %x.%x\n", label, version >> 8, version & 0xFF);
}

// Today's daemon has no property "connected", so this row never fires, and a lost connection is
// reported only after the next key. Watching the state instead would print a line in each session.
constexpr PropertyNotice<ObexSession1> kSessionNotices[] = {
    {"notify::source", ReportText<obex_session1_get_source>, "Source Attribute Received"},
    {"notify::destination", ReportText<obex_session1_get_destination>,
     "Destination Attribute Received"},
    {"notify::channel", ReportNumber<obex_session1_get_channel>, "Channel Attribute Received"},
    {"notify::target", ReportText<obex_session1_get_target>, "Target Attribute Received"},
    {"notify::connected", ReportConnection, "Session"},
};

constexpr PropertyNotice<ObexPhonebookAccess1> kPhonebookNotices[] = {
    {"notify::database-identifier", ReportText<obex_phonebook_access1_get_database_identifier>,
     "Database Identifier"},
    {"notify::primary-counter", ReportText<obex_phonebook_access1_get_primary_counter>,
     "Primary Counter"},
    {"notify::secondary-counter", ReportText<obex_phonebook_access1_get_secondary_counter>,
     "Secondary Counter"},
    {"notify::new-missed-calls", ReportNumber<obex_phonebook_access1_get_new_missed_calls>,
     "New Missed Calls"},
    {"notify::folder", ReportText<obex_phonebook_access1_get_folder>, "Folder"},
    {"notify::fixed-image-size", ReportFixedImageSize, "Fixed Image Size"},
    {"notify::profile-version", ReportVersion, "Profile Version"},
    {"notify::supported-phonebooks", ReportRepositories, "Server supports"},
    {"notify::supported-features", ReportHex<obex_phonebook_access1_get_supported_features>,
     "Supported Features"},
};

void PrintText(const char* label, const TextPtr& text) {
    PROXY_Print(kNormal, "%s: %s\n", label, OrUnknown(text.get()));
}

}  // namespace

PhonebookContext::PhonebookContext(const std::string& path) : path_(path) {
    BuildProxy();
}

// Release the proxies first so that no callback runs while the file is deleted.
PhonebookContext::~PhonebookContext() {
    session_proxy_.reset();
    phonebook_proxy_.reset();
    if (transfer_) {
        transfer_->RemoveDownloadedFile();
    }
}

void PhonebookContext::BuildProxy() {
    const std::string bus_name = obexProxy.GetBusName();
    phonebook_proxy_ =
        MakeProxy(obex_phonebook_access1_proxy_new_for_bus_sync, bus_name, path_, "Phonebook");
    session_proxy_ = MakeProxy(obex_session1_proxy_new_for_bus_sync, bus_name, path_, "Session");
    GetInitialProperties();
    SessionSubscribe();
}

void PhonebookContext::GetInitialProperties() const {
    ObexSession1* const session = session_proxy_.get();
    PROXY_Print(kNormal, "Session %s\n", IsValid() ? "Connected" : "Disconnected");
    PrintText("Source Address", TextPtr(obex_session1_dup_source(session)));
    PrintText("Destination Address", TextPtr(obex_session1_dup_destination(session)));
    PrintText("Target UUID", TextPtr(obex_session1_dup_target(session)));
    PROXY_Print(kNormal, "Channel: %d\n", obex_session1_get_channel(session));
    const bool fixed_size =
        obex_phonebook_access1_get_fixed_image_size(phonebook_proxy_.get()) != FALSE;
    PROXY_Print(kNormal, "Fixed Image Size: %sSupported\n", fixed_size ? "" : "Not ");
}

void PhonebookContext::SessionSubscribe() {
    FollowChanges<ObexSession1>(session_proxy_.get(), kSessionNotices);
    FollowChanges<ObexPhonebookAccess1>(phonebook_proxy_.get(), kPhonebookNotices);
}

bool PhonebookContext::IsValid() const {
    return obex_session1_get_connection_state(session_proxy_.get()) == kConnected;
}

}  // namespace morvane
