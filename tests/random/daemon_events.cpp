#include "random/daemon_events.h"

#include "simulator/objects/names.h"

namespace morvane_test {

/// A property that the tool reads.
struct PropertyRow {
    struct Interface {
        const char* object;
        const char* name;
    };
    const Interface& interface;
    const char* name;
    const char* values[4];  ///< of the correct type, as GVariant text
};

namespace {

constexpr PropertyRow::Interface kDevice = {"{phone} ", simulator::kDeviceInterface};
constexpr PropertyRow::Interface kSession = {"{session} ", simulator::kSessionInterface};
constexpr PropertyRow::Interface kPhonebook = {"{session} ", simulator::kPhonebookInterface};
constexpr PropertyRow::Interface kTransfer = {"{transfer} ", simulator::kTransferInterface};

// ConnectionState is not among them: it has events of its own.
constexpr PropertyRow kProperties[] = {
    {kDevice, "Address", {"'02:00:5E:10:00:01'", "''", "'%s%n'", "'\\n'"}},
    {kDevice, "Alias", {"'New alias'", "''", "'%s%d %'", "'☎ Ærø'"}},
    {kDevice, "RSSI", {"int16 -1", "int16 -32768", "int16 0", "int16 32767"}},
    {kSession, "Source", {"'02:00:5E:00:00:02'", "''", "'%s'", "'\\n'"}},
    {kSession, "Destination", {"'02:00:5E:00:00:03'", "''", "'%n'", "'☎'"}},
    {kSession, "Channel", {"uint16 0", "uint16 1", "uint16 19", "uint16 65535"}},
    {kSession, "Target", {"'0000112f'", "''", "'%s'", "'☎'"}},
    {kPhonebook, "Folder", {"'telecom/pb'", "''", "'%s%n'", "'☎'"}},
    {kPhonebook, "DatabaseIdentifier", {"'1'", "''", "'%x'", "'☎'"}},
    {kPhonebook, "PrimaryCounter", {"'1'", "''", "'%x'", "'☎'"}},
    {kPhonebook, "SecondaryCounter", {"'1'", "''", "'%x'", "'☎'"}},
    {kPhonebook, "FixedImageSize", {"true", "false", "true", "false"}},
    {kPhonebook, "NewMissedCalls", {"byte 0", "byte 1", "byte 127", "byte 255"}},
    {kPhonebook, "ProfileVersion", {"uint16 0", "uint16 258", "uint16 266", "uint16 65535"}},
    {kPhonebook, "SupportedPhonebooks", {"byte 0", "byte 1", "byte 15", "byte 255"}},
    {kPhonebook, "SupportedFeatures", {"uint32 0", "uint32 1", "uint32 1023", "uint32 4294967295"}},
    {kTransfer, "Status", {"'active'", "''", "'%s'", "'☎'"}},
    {kTransfer, "Name", {"'pb.vcf'", "''", "'%s'", "'☎'"}},
    {kTransfer, "Size", {"uint64 0", "uint64 1", "uint64 1000", "uint64 18446744073709551615"}},
    {kTransfer, "Transferred", {"uint64 0", "uint64 1", "uint64 9", "uint64 18446744073709551615"}},
    {kTransfer, "Filename", {"'/nowhere/at/all.vcf'", "''", "'/'", "'%s'"}},
    {kTransfer,
     "Session",
     {"objectpath '/'", "objectpath '/a'", "objectpath '/b'", "objectpath '/c'"}},
    {kTransfer, "Type", {"'text/x-vcard'", "''", "'%s'", "'☎'"}},
};

constexpr const char* kValues[] = {
    "'text'",     "''",         "byte 5",    "true",       "int16 -1",       "uint16 7",
    "uint32 7",   "uint64 7",   "int64 -1",  "1.5",        "objectpath '/'", "@as []",
    "['a', 'b']", "{'a': <1>}", "<'boxed'>", "@ay [1, 2]", "('a', 1)",       "signature 'a{sv}'"};

// Complete replies; wrong for most methods.
constexpr const char* kReplies[] = {
    "()",
    "('text',)",
    "(uint16 42,)",
    "(uint16 65535,)",
    "(uint32 42,)",
    "(['a', 'b'],)",
    "(@as [],)",
    "(['FN', '%s%n', '', '☎'],)",
    "([('1.vcf', 'One'), ('%s', '%n')],)",
    "(@a(ss) [],)",
    "([('1.vcf',)],)",
    "(objectpath '/nowhere',)",
    "(objectpath '/nowhere', {'Size': <uint64 5>})",
    "(objectpath '/nowhere', {'Size': <'big'>, 'Status': <7>, 'Filename': <@as []>, 'X': <1>})",
    "(objectpath '/', @a{sv} {})",
    "('/nowhere', @a{sv} {})",
    "(objectpath '/nowhere', {'Status': <<'boxed'>>, 'Name': <'%s%n'>, 'Session': <'/'>})",
};

// Replies to pulls: the tool parses these dictionaries itself.
constexpr const char* kTransferReplies[] = {
    "(objectpath '/nowhere', {'Size': <'big'>, 'Status': <7>, 'Filename': <@as []>, 'X': <1>})",
    "(objectpath '/nowhere', {'Size': <uint32 5>, 'Transferred': <true>, 'Type': <byte 1>})",
    "(objectpath '/nowhere', {'Status': <<'boxed'>>, 'Name': <'%s%n'>, 'Session': <uint64 1>})",
    "(objectpath '/nowhere', @a{sv} {})",
    "(objectpath '/', {'Size': <uint64 0>, 'Filename': <''>})",
};

constexpr const char* kMethods[] = {
    "CreateSession",    "RemoveSession",   "SetUserId",     "SetPassword",
    "Select",           "PullAll",         "Pull",          "List",
    "Search",           "GetSize",         "Suspend",       "Resume",
    "Cancel",           "GetAll",          "UpdateVersion", "GetSizeListing",
    "ListFilterFields", "GetSizePhonebook"};

constexpr const char* kErrors[] = {
    "com.veltrisonix.Error.Failed Not today", "com.veltrisonix.Error.Failed 100 %s %n",
    "org.freedesktop.DBus.Error.UnknownMethod ☎", "org.freedesktop.DBus.Error.ServiceUnknown gone"};

constexpr const char* kPaths[] = {"/com/veltrisonix/hci0/dev_02_00_5E_20_00_01",
                                  "/com/veltrisonix/hci0/dev_02_00_5E_20_00_02",
                                  "/com/veltrisonix/obex/dev_",
                                  "/dev_x",
                                  "/com/veltrisonix/hci0/dev",
                                  "/com/veltrisonix/hci1/device_1"};

struct EventRow {
    unsigned weight;
    const char* pattern;
    Loss loss = Loss::kNone;
    const char* recovery = nullptr;
};

constexpr EventRow kEvents[] = {
    {10, "add {path} {address} {alias}"},
    {4, "remove {path}"},
    {2, "remove {phone}", Loss::kSession, "return {phone}"},
    {2, "return {phone}"},
    {3, "remove-client", Loss::kClient, "add-client"},
    {2, "leave", Loss::kClient, "come-back"},
    {2, "crash", Loss::kClient, "come-back"},
    {3, "close {session}", Loss::kSession},
    {3, "state {session} {state}", Loss::kSession, "state {session} 5"},
    {6, "start {transfer}"},
    {10, "advance {transfer} {bytes}"},
    {6, "complete {transfer}"},
    {4, "abort {transfer}"},
    {1, "stall on", Loss::kNone, "stall off"},
    {1, "empty-transfer-path on", Loss::kNone, "empty-transfer-path off"},
    {3, "miss-call {phone} 555"},
    {3, "add-contact {phone} 555 Somebody %s New"},
    {2, "restore-content"},
    {6, "refuse {method} {error}", Loss::kNone, "clear-faults"},
    {5, "reply {method} {reply}", Loss::kNone, "clear-faults"},
    {5, "reply {pull} {transfer_reply}", Loss::kNone, "clear-faults"},
    {5, "hang {method}", Loss::kNone, "release"},
    {2, "release"},
    {2, "clear-faults"},
    {3, "override {anywhere} {value}", Loss::kNone, "clear-property-faults"},
    {3, "hide {anywhere}", Loss::kNone, "clear-property-faults"},
    {12, "notify {property} {value}"},
    {3, "invalidate {property}"},
    {4, "flood {property} {count} {value}"},
};

}  // namespace

DaemonEvent DaemonEventGenerator::Draw() {
    // Restore a lost client soon: few actions are possible without it.
    if (recoveries_.empty() || random_.Chance(recoveries_.back().restores_client ? 20 : 60))
        return DrawNewEvent();
    DaemonEvent event = recoveries_.back();
    recoveries_.pop_back();
    return event;
}

DaemonEvent DaemonEventGenerator::DrawNewEvent() {
    const EventRow& row =
        random_.PickWeighted(kEvents, [](const EventRow& event) { return event.weight; });
    DaemonEvent event;
    event.loss = row.loss;
    event.command = Fill(row.pattern, event);
    const auto begins = [&event](const char* text) { return event.command.rfind(text, 0) == 0; };
    event.makes_calls_hang = begins("hang ");
    // The tool calls GetAll for the properties of new objects.
    const bool hides_all = event.failing_method == "GetAll";
    event.hides_address = event.hides_address || hides_all;
    event.renames_files = event.renames_files || hides_all;
    if (event.makes_calls_hang) event.failing_method.clear();
    event.fakes_transfers = begins("reply Pull") || begins("empty-transfer-path");
    if (row.recovery) {
        DaemonEvent recovery;
        recovery.command = row.recovery;
        recovery.restores_client = row.loss == Loss::kClient;
        recoveries_.push_back(recovery);
    }
    return event;
}

std::string DaemonEventGenerator::Fill(const std::string& pattern, DaemonEvent& event) {
    std::string filled;
    std::size_t end = 0;
    for (std::size_t open = pattern.find('{'); open != pattern.npos;
         open = pattern.find('{', end)) {
        filled += pattern.substr(end, open - end);
        end = pattern.find('}', open) + 1;
        filled += DrawPart(pattern.substr(open, end - open), event);
    }
    return filled + pattern.substr(end);
}

std::string DaemonEventGenerator::DrawPart(const std::string& part, DaemonEvent& event) {
    if (part == "{path}") return random_.Pick(kPaths);
    if (part == "{address}") return "02:00:5E:20:00:0" + std::to_string(random_.Below(3));
    if (part == "{alias}") return random_.Chance(50) ? "Some Alias" : "%s %n ☎";
    if (part == "{state}") return std::to_string(random_.Below(5));
    if (part == "{bytes}") return std::to_string(random_.Below(3000));
    if (part == "{count}") return std::to_string(random_.Below(1000));
    if (part == "{method}") return event.failing_method = random_.Pick(kMethods);
    if (part == "{pull}") return random_.Chance(50) ? "PullAll" : "Pull";
    if (part == "{transfer_reply}") return random_.Pick(kTransferReplies);
    if (part == "{error}") return random_.Pick(kErrors);
    if (part == "{reply}") return random_.Pick(kReplies);
    if (part == "{property}") return DrawProperty(event, false);
    if (part == "{anywhere}") return DrawProperty(event, true);
    if (part == "{value}") return DrawValue(event);
    return part;
}

std::string DaemonEventGenerator::DrawProperty(DaemonEvent& event, bool anywhere) {
    property_ = &random_.Pick(kProperties);
    const std::string name = property_->name;
    event.hides_address = name == "Address";
    event.renames_files = name == "Filename";
    const char* const object = anywhere && random_.Chance(70) ? "* " : property_->interface.object;
    return object + (property_->interface.name + (" " + name));
}

std::string DaemonEventGenerator::DrawValue(DaemonEvent& event) {
    if (random_.Chance(65)) return random_.Pick(property_->values);
    event.mistypes_properties = true;
    return random_.Pick(kValues);
}

}  // namespace morvane_test
