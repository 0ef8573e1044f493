#include "simulator/program/command_table.h"

#include "simulator/program/command_error.h"
#include "simulator/program/commands.h"
#include "simulator/program/known_names.h"
#include "simulator/program/listings.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

namespace simulator {
namespace {

using morvane::TextPtr;
using morvane::VariantPtr;

constexpr char kAtNextAnswer[] = "at the next answer";
constexpr char kEndsSession[] = "at once; an open session ends at the next answer";
constexpr char kAtNextCall[] = "when it is next called";
constexpr char kAtNextPull[] = "with the next pull";
constexpr char kWhenFound[] =
    "when the object is next found: a phone after remove and return; with *, also a session with "
    "the next one, and a transfer with the next pull; in a session or transfer that exists, when "
    "the property next changes";

template <auto Member, typename... Arguments>
bool Invoke(Daemon& daemon, const Arguments&... arguments) {
    if constexpr (std::is_void_v<decltype((daemon.*Member)(arguments...))>) {
        (daemon.*Member)(arguments...);
        return true;
    } else {
        return (daemon.*Member)(arguments...);
    }
}

/// Executes a command by one call of the daemon with all its arguments.
template <auto Member, std::size_t... Index>
bool PassWords(Daemon& daemon, const Words& words, std::index_sequence<Index...> /*count*/) {
    return Invoke<Member>(daemon, words[Index].value...);
}
template <auto Member, std::size_t Count = 0>
Outcome WithWords(Commands& commands, const Words& words) {
    return PassWords<Member>(commands.daemon(), words, std::make_index_sequence<Count>());
}

template <auto Member>
Outcome WithSwitch(Commands& commands, const Words& words) {
    return Invoke<Member>(commands.daemon(), words[0].value == "on");
}

template <auto Member>
Outcome WithNumber(Commands& commands, const Words& words) {
    return Invoke<Member>(commands.daemon(), words[0].value, ParseNumber(words[1].value));
}

template <auto Member>
Outcome WithProperty(Commands& commands, const Words& words) {
    const VariantPtr value = ParseValue(words[3].value);
    return Invoke<Member>(commands.daemon(), words[0].value, words[1].value, words[2].value,
                          value.get());
}

template <auto List>
Outcome Listing(Commands& commands, const Words& /*words*/) {
    return List(commands.daemon());
}

Outcome SetState(Commands& commands, const Words& words) {
    return commands.daemon().SetConnectionState(
        words[0].value, static_cast<std::uint8_t>(ParseNumber(words[1].value)));
}

Outcome AddContact(Commands& commands, const Words& words) {
    commands.daemon().AddContact(words[0].value, words[2].value, words[1].value);
    return true;
}

/// Only regular files: reading a FIFO would block.
Outcome SetContentFromFile(Commands& commands, const Words& words) {
    const std::string& file = words[0].value;
    gchar* content = nullptr;
    gsize length = 0;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        throw CommandError(
            CommandErrorKind::kOtherFailure,
            "Cannot read " + file + ": " + (error ? error.message() : "not a regular file"));
    }
    if (g_file_get_contents(file.c_str(), &content, &length, nullptr) == FALSE) {
        throw CommandError(CommandErrorKind::kOtherFailure,
                           "Cannot read " + file + ": " + g_strerror(errno));
    }
    const TextPtr owned(content);
    commands.daemon().SetPullContent({content, length});
    return true;
}

Outcome Refuse(Commands& commands, const Words& words) {
    commands.daemon().Refuse(words[0].value, words[1].value, words[2].value);
    return true;
}

Outcome Reply(Commands& commands, const Words& words) {
    commands.daemon().Reply(words[0].value, ParseValue(words[1].value).get());
    return true;
}

Outcome Hang(Commands& commands, const Words& words) {
    commands.daemon().Hang(words[0].value);
    return true;
}

Outcome Flood(Commands& commands, const Words& words) {
    const VariantPtr value = ParseValue(words[4].value);
    commands.daemon().Flood(words[0].value, words[1].value, words[2].value,
                            static_cast<std::size_t>(ParseNumber(words[3].value)),
                            [&value](std::size_t) { return value.get(); });
    return true;
}

Outcome SwitchLog(Commands& commands, const Words& words) {
    const bool on = words[0].value == "on";
    const bool changed = commands.ShowCalls(on);
    if (on && changed) {
        return "The log of calls is on: printed where the simulator was started\n";
    }
    return changed;
}

Outcome Quit(Commands& commands, const Words& /*words*/) {
    commands.Quit();
    return true;
}

Outcome Help(Commands& commands, const Words& words);

using AddSimpleDevice = void (Daemon::*)(const std::string&, const std::string&,
                                         const std::string&);

constexpr Command kCommands[] = {
    {"help", "[COMMAND]", "List the commands, or describe one", "help refuse", Help},
    {"phones", "", "List the phones", "phones", Listing<ListPhones>},
    {"add", "PATH ADDRESS ALIAS", "Add a device",
     "add /com/veltrisonix/hci0/dev_1 00:00:5E:00:53:01 My phone",
     WithWords<static_cast<AddSimpleDevice>(&Daemon::AddDevice), 3>, "{ALIAS} is added as {PATH}",
     kAtOnce},
    {"remove", "PHONE", "Take a phone or other device out of reach", "remove Birch",
     WithWords<&Daemon::RemoveDevice, 1>, "{PHONE} is out of reach", kEndsSession},
    {"return", "PHONE", "Bring a phone back", "return Birch", WithWords<&Daemon::ReturnDevice, 1>,
     "{PHONE} is back in reach", kAtOnce, "{PHONE} is in reach already"},
    {"remove-client", "", "Remove the client object", "remove-client",
     WithWords<&Daemon::RemoveClient>, "The client object and its sessions are removed",
     kEndsSession, "The client object is removed already"},
    {"add-client", "", "Add the client object again", "add-client", WithWords<&Daemon::AddClient>,
     "The client object is back", kAtOnce, "There is a client object already"},
    {"leave", "", "Release the bus name", "leave", WithWords<&Daemon::LeaveBus>,
     "The bus name is given up", kEndsSession, "The bus name is given up already"},
    {"crash", "", "Close the connection to the bus, like a killed process", "crash",
     WithWords<&Daemon::Crash>, "The connection to the bus is dropped", kEndsSession,
     "There is no connection to drop"},
    {"come-back", "", "Connect to the bus again and own the name", "come-back",
     WithWords<&Daemon::ReturnToBus>, "The daemon is back on the bus", kAtOnce,
     "The daemon is on the bus already"},
    {"sessions", "", "List the sessions", "sessions", Listing<ListSessions>},
    {"close", "SESSION", "End a session from the phone's side", "close session",
     WithWords<&Daemon::CloseSession, 1>, "{SESSION} is closed by the phone", kAtNextAnswer},
    {"state", "SESSION STATE", "Set a session's connection state", "state session 0", SetState,
     "The connection state of {SESSION} is {STATE}", kAtNextAnswer,
     "The connection state of {SESSION} is {STATE} already"},
    {"transfers", "", "List the transfers", "transfers", Listing<ListTransfers>},
    {"stall", "on|off", "Let transfers make no progress", "stall on",
     WithSwitch<&Daemon::StallTransfers>, "Stalling of transfers is {on|off}", kAtOnce,
     "Stalling of transfers is {on|off} already"},
    {"start", "TRANSFER", "Make a transfer active", "start transfer",
     WithWords<&Daemon::StartTransfer, 1>, "{TRANSFER} is active", kAtOnce,
     "{TRANSFER} is active already"},
    {"advance", "TRANSFER BYTES", "Move a transfer on", "advance transfer 100",
     WithNumber<&Daemon::AdvanceTransfer>, "{TRANSFER} has moved on by at most {BYTES} bytes",
     kAtOnce},
    {"complete", "TRANSFER", "Finish a transfer", "complete transfer",
     WithWords<&Daemon::CompleteTransfer, 1>, "{TRANSFER} is complete", kAtOnce},
    {"abort", "TRANSFER", "Let a transfer fail", "abort transfer",
     WithWords<&Daemon::AbortTransfer, 1>, "{TRANSFER} has failed", kAtOnce},
    {"empty-transfer-path", "on|off", "Answer pulls with \"/\" and no transfer",
     "empty-transfer-path on", WithSwitch<&Daemon::UseEmptyTransferPath>,
     "The empty transfer path is {on|off}", kAtNextPull,
     "The empty transfer path is {on|off} already"},
    {"content", "TEXT", "Let pulls download this text", "content BEGIN:VCARD",
     WithWords<&Daemon::SetPullContent, 1>, "Pulls download this text", kAtNextPull},
    {"content-file", "FILE", "Let pulls download the present content of a file",
     "content-file strange.vcf", SetContentFromFile, "Pulls download the content of {FILE}",
     kAtNextPull},
    {"restore-content", "", "Let pulls download the contents of phones again", "restore-content",
     WithWords<&Daemon::RestorePullContent>, "Pulls download what phones contain", kAtNextPull,
     "Pulls download what phones contain already"},
    {"miss-call", "PHONE NUMBER", "Miss a call on a phone", "miss-call Aster +12025550123",
     WithWords<&Daemon::MissCall, 2>, "{PHONE} has missed a call from {NUMBER}",
     "after the next list, search, size or pull of all, with mch or cch selected"},
    {"add-contact", "PHONE NUMBER NAME", "Add a contact on a phone",
     "add-contact Aster +12025550123 Ann Doe", AddContact, "{PHONE} has the contact {NAME}",
     "in the next list, search, size or pull; in the counters after they were updated"},
    {"refuse", "METHOD ERROR MESSAGE", "Answer a method with an error",
     "refuse Select Failed Not today", Refuse, "{METHOD} is refused with {ERROR}", kAtNextCall},
    {"reply", "METHOD TUPLE", "Answer a method with a tuple, such as ('text', uint32 1)",
     "reply GetSize ('many',)", Reply, "{METHOD} is answered with {TUPLE}", kAtNextCall},
    {"hang", "METHOD", "Leave a method without an answer", "hang GetSize", Hang,
     "{METHOD} gets no answer until release", kAtNextCall},
    {"release", "", "Execute and answer calls that hang", "release", WithWords<&Daemon::Release>,
     "What hung is answered, and so are later calls", kAtOnce, "Nothing hangs"},
    {"clear-faults", "", "Remove faults of methods", "clear-faults",
     WithWords<&Daemon::ClearFaults>, "Faults of methods are forgotten",
     "when a method is next called; what hangs waits for release",
     "There are no faults of methods"},
    {"override", "OBJECT|* INTERFACE PROPERTY VALUE", "Replace the value of a property",
     "override * Device1 Alias uint32 7", WithProperty<&Daemon::OverrideProperty>,
     "{PROPERTY} of {OBJECT|*} reads as {VALUE}", kWhenFound},
    {"hide", "OBJECT|* INTERFACE PROPERTY", "Leave out a property", "hide * Device1 Alias",
     WithWords<&Daemon::HideProperty, 3>, "{PROPERTY} of {OBJECT|*} is missing", kWhenFound},
    {"clear-property-faults", "", "Remove faults of properties", "clear-property-faults",
     WithWords<&Daemon::ClearPropertyFaults>, "Faults of properties are forgotten", kWhenFound,
     "There are no faults of properties"},
    {"notify", "OBJECT INTERFACE PROPERTY VALUE", "Announce a value",
     "notify session PhonebookAccess1 NewMissedCalls byte 3", WithProperty<&Daemon::Notify>,
     "{PROPERTY} of {OBJECT} is announced as {VALUE}", kAtOnce},
    {"invalidate", "OBJECT INTERFACE PROPERTY", "Announce that a value is no longer valid",
     "invalidate session PhonebookAccess1 Folder", WithWords<&Daemon::Invalidate, 3>,
     "{PROPERTY} of {OBJECT} is announced as no longer valid", kAtOnce},
    {"flood", "OBJECT INTERFACE PROPERTY COUNT VALUE", "Announce a value many times",
     "flood session PhonebookAccess1 Folder 10000 'telecom/pb'", Flood,
     "{PROPERTY} of {OBJECT} is announced {COUNT} times", kAtOnce},
    {"calls", "", "List the calls that arrived", "calls", Listing<ListCalls>},
    {"forget-calls", "", "Forget the calls that arrived", "forget-calls",
     WithWords<&Daemon::ForgetCalls>, "The calls that arrived are forgotten", "",
     "No calls have arrived"},
    {"log", "on|off", "Show each call with its answer when it arrives", "log on", SwitchLog,
     "The log of calls is {on|off}", "", "The log of calls is {on|off} already"},
    {"quit", "", "End the simulator", "quit", Quit, "The simulator ends", kEndsSession},
};

bool ChecksNames(const Command& command) {
    const std::vector<std::string> kinds = KindsIn(command.arguments);
    return std::any_of(kinds.begin(), kinds.end(), [](const std::string& kind) {
        return kind == "METHOD" || kind == "INTERFACE";
    });
}

std::string HelpLine(const Command& command) {
    constexpr std::size_t kHelpColumn = 46;
    std::string line = UsageOf(command);
    line.resize(std::max(kHelpColumn, line.size() + 2), ' ');
    return line + command.help + "\n";
}

std::string Describe(const Command& command) {
    std::string text = "Usage: " + UsageOf(command) + "\n" + command.help + ".\n";
    if (*command.shown != '\0') {
        text += std::string("Shown ") + command.shown + ".\n";
    }
    if (ChecksNames(command)) {
        text += std::string("To use names that are unknown: ") + command.name + "!\n";
    }
    return text + "Example: " + command.example + "\n";
}

Outcome Help(Commands& /*commands*/, const Words& words) {
    if (!words.empty()) {
        bool insists = false;
        return Describe(FindCommand(words[0].value, insists));
    }
    std::string lines;
    for (const Command& command : kCommands) {
        lines += HelpLine(command);
    }
    return lines;
}

}  // namespace

const Command& FindCommand(const std::string& word, bool& insists) {
    insists = !word.empty() && word.back() == '!';
    const std::string name = word.substr(0, word.size() - (insists ? 1 : 0));
    for (const Command& command : kCommands) {
        if (name == command.name && (!insists || ChecksNames(command))) {
            return command;
        }
    }
    const std::string suggestion = Suggest(name, CommandNames());
    throw CommandError(
        CommandErrorKind::kUnknownCommand,
        "Unknown command: " + word + (suggestion.empty() ? " (try help)" : suggestion));
}

std::vector<std::string> CommandNames() {
    std::vector<std::string> names;
    for (const Command& command : kCommands) {
        names.emplace_back(command.name);
    }
    return names;
}

std::string UsageOf(const Command& command) {
    return *command.arguments == '\0' ? command.name
                                      : std::string(command.name) + " " + command.arguments;
}

}  // namespace simulator
