#include "simulator/program/commands.h"

#include "interfaces/glib_ptr.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::VariantPtr;

/// The words of a command without its name; what is too many for them belongs to the last.
using Words = std::vector<std::string>;

struct Command {
    const char* name;
    const char* arguments;  ///< one word each, optional in brackets; the last takes the rest
    const char* help;
    std::string (*execute)(Commands& commands, Daemon& daemon, const Words& words);
};

CommandError Invalid(const std::string& message) {
    return {CommandErrorKind::kInvalidArguments, message};
}

VariantPtr ParseValue(const std::string& text) {
    ErrorPtr error;
    VariantPtr value(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, Out(error)));
    if (!value) {
        throw Invalid("Not a value: " + text + " (" + error->message + ")");
    }
    return value;
}

std::uint64_t ParseNumber(const std::string& text, std::uint64_t largest) {
    guint64 number = 0;
    if (g_ascii_string_to_unsigned(text.c_str(), 10, 0, largest, &number, nullptr) == FALSE) {
        throw Invalid("Not a number from 0 to " + std::to_string(largest) + ": " + text);
    }
    return number;
}

std::uint64_t ParseNumber(const std::string& text) {
    return ParseNumber(text, std::numeric_limits<std::uint64_t>::max());
}

bool ParseSwitch(const std::string& text) {
    if (text != "on" && text != "off") {
        throw Invalid("Neither on nor off: " + text);
    }
    return text == "on";
}

std::string Lines(const std::vector<std::string>& texts) {
    std::string lines;
    for (const std::string& text : texts) {
        lines += text + "\n";
    }
    return lines;
}

std::string ListPhones(Commands& /*commands*/, Daemon& daemon, const Words& /*words*/) {
    std::string lines;
    for (const PhoneInfo& phone : daemon.Phones()) {
        lines += phone.path + "  " + phone.address + "  " + phone.name;
        if (phone.demands_authentication) {
            lines += "  (demands user id and password)";
        }
        lines += phone.present ? "\n" : "  (out of reach)\n";
    }
    return lines;
}

std::string ListCalls(Commands& /*commands*/, Daemon& daemon, const Words& /*words*/) {
    std::string lines;
    for (const Call& call : daemon.Calls()) {
        lines += Describe(call) + "\n";
    }
    return lines;
}

std::string Refuse(Commands& /*commands*/, Daemon& daemon, const Words& words) {
    daemon.Refuse(words[0], words[1], words[2]);
    return {};
}

std::string Flood(Commands& /*commands*/, Daemon& daemon, const Words& words) {
    const VariantPtr value = ParseValue(words[4]);
    const auto count =
        static_cast<std::size_t>(ParseNumber(words[3], std::numeric_limits<std::size_t>::max()));
    daemon.Flood(words[0], words[1], words[2], count,
                 [&value](std::size_t) { return value.get(); });
    return {};
}

std::string Help(Commands& commands, Daemon& daemon, const Words& words);

/// A command that is one call of the daemon and tells nothing.
template <auto Member>
std::string Simply(Commands& /*commands*/, Daemon& daemon, const Words& /*words*/) {
    (daemon.*Member)();
    return {};
}

/// The same with texts.
template <auto Member, std::size_t... Index>
void PassWords(Daemon& daemon, const Words& words, std::index_sequence<Index...> /*count*/) {
    (daemon.*Member)(words[Index]...);
}
template <auto Member, std::size_t Count>
std::string WithWords(Commands& /*commands*/, Daemon& daemon, const Words& words) {
    PassWords<Member>(daemon, words, std::make_index_sequence<Count>());
    return {};
}

/// The same with on or off.
template <auto Member>
std::string Switch(Commands& /*commands*/, Daemon& daemon, const Words& words) {
    (daemon.*Member)(ParseSwitch(words[0]));
    return {};
}

/// The same with a place, an interface, a property and its value.
template <auto Member>
std::string WithProperty(Commands& /*commands*/, Daemon& daemon, const Words& words) {
    (daemon.*Member)(words[0], words[1], words[2], ParseValue(words[3]).get());
    return {};
}

using AddSimpleDevice = void (Daemon::*)(const std::string&, const std::string&,
                                         const std::string&);

constexpr Command kCommands[] = {
    {"help", "[COMMAND]", "List the commands, or describe one", Help},
    {"phones", "", "List the phones", ListPhones},
    {"add", "PATH ADDRESS ALIAS", "Add a device",
     WithWords<static_cast<AddSimpleDevice>(&Daemon::AddDevice), 3>},
    {"remove", "DEVICE", "Take a device, by path or address, out of reach",
     WithWords<&Daemon::RemoveDevice, 1>},
    {"return", "DEVICE", "Bring a phone back", WithWords<&Daemon::ReturnDevice, 1>},
    {"remove-client", "", "Take the client object away", Simply<&Daemon::RemoveClient>},
    {"add-client", "", "Bring it back", Simply<&Daemon::AddClient>},
    {"leave", "", "Give up the bus name", Simply<&Daemon::LeaveBus>},
    {"crash", "", "Drop the connection to the bus", Simply<&Daemon::Crash>},
    {"come-back", "", "Return to the bus", Simply<&Daemon::ReturnToBus>},
    {"sessions", "", "List the sessions",
     [](Commands& /*commands*/, Daemon& daemon, const Words& /*words*/) {
         return Lines(daemon.Sessions());
     }},
    {"close", "SESSION", "End a session from the phone's side",
     WithWords<&Daemon::CloseSession, 1>},
    {"state", "SESSION NUMBER", "Set a session's connection state",
     [](Commands& /*commands*/, Daemon& daemon, const Words& words) -> std::string {
         daemon.SetConnectionState(words[0], static_cast<std::uint8_t>(ParseNumber(words[1], 255)));
         return {};
     }},
    {"transfers", "", "List the transfers",
     [](Commands& /*commands*/, Daemon& daemon, const Words& /*words*/) {
         return Lines(daemon.Transfers());
     }},
    {"stall", "on|off", "Let transfers stand still", Switch<&Daemon::StallTransfers>},
    {"start", "TRANSFER", "Make a transfer active", WithWords<&Daemon::StartTransfer, 1>},
    {"advance", "TRANSFER BYTES", "Move a transfer on",
     [](Commands& /*commands*/, Daemon& daemon, const Words& words) -> std::string {
         daemon.AdvanceTransfer(words[0], ParseNumber(words[1]));
         return {};
     }},
    {"complete", "TRANSFER", "Finish a transfer", WithWords<&Daemon::CompleteTransfer, 1>},
    {"abort", "TRANSFER", "Let a transfer fail", WithWords<&Daemon::AbortTransfer, 1>},
    {"empty-transfer-path", "on|off", "Answer pulls with \"/\" and no transfer",
     Switch<&Daemon::UseEmptyTransferPath>},
    {"content", "TEXT", "Let the next pulls download this text",
     WithWords<&Daemon::SetPullContent, 1>},
    {"restore-content", "", "Let them download what phones hold",
     Simply<&Daemon::RestorePullContent>},
    {"miss-call", "PHONE NUMBER", "Miss a call on a phone", WithWords<&Daemon::MissCall, 2>},
    {"add-contact", "PHONE NUMBER NAME", "Add a contact on a phone",
     [](Commands& /*commands*/, Daemon& daemon, const Words& words) -> std::string {
         daemon.AddContact(words[0], words[2], words[1]);
         return {};
     }},
    {"refuse", "METHOD ERROR MESSAGE", "Answer a method with an error", Refuse},
    {"reply", "METHOD VALUE", "Answer a method with a tuple, such as ('text', uint32 1)",
     [](Commands& /*commands*/, Daemon& daemon, const Words& words) -> std::string {
         daemon.Reply(words[0], ParseValue(words[1]).get());
         return {};
     }},
    {"hang", "METHOD", "Leave a method without an answer",
     [](Commands& /*commands*/, Daemon& daemon, const Words& words) -> std::string {
         daemon.Hang(words[0]);
         return {};
     }},
    {"release", "", "Answer what hangs", Simply<&Daemon::Release>},
    {"clear-faults", "", "Forget faults of methods", Simply<&Daemon::ClearFaults>},
    {"override", "PATH|* INTERFACE PROPERTY VALUE", "Let a property read as this",
     WithProperty<&Daemon::OverrideProperty>},
    {"hide", "PATH|* INTERFACE PROPERTY", "Let a property be missing",
     WithWords<&Daemon::HideProperty, 3>},
    {"clear-property-faults", "", "Forget faults of properties",
     Simply<&Daemon::ClearPropertyFaults>},
    {"notify", "PATH INTERFACE PROPERTY VALUE", "Announce a value", WithProperty<&Daemon::Notify>},
    {"invalidate", "PATH INTERFACE PROPERTY", "Announce that a value is no longer valid",
     WithWords<&Daemon::Invalidate, 3>},
    {"flood", "PATH INTERFACE PROPERTY COUNT VALUE", "Announce a value many times", Flood},
    {"calls", "", "List the calls that arrived", ListCalls},
    {"forget-calls", "", "Forget them", Simply<&Daemon::ForgetCalls>},
    {"quit", "", "End the daemon",
     [](Commands& commands, Daemon& /*daemon*/, const Words& /*words*/) -> std::string {
         commands.Quit();
         return {};
     }},
};

const Command& FindCommand(const std::string& name) {
    for (const Command& command : kCommands) {
        if (name == command.name) {
            return command;
        }
    }
    throw CommandError(CommandErrorKind::kUnknownCommand,
                       "Unknown command: " + name + " (try help)");
}

std::string UsageOf(const Command& command) {
    return *command.arguments == '\0' ? command.name
                                      : std::string(command.name) + " " + command.arguments;
}

std::string Describe(const Command& command) {
    constexpr std::size_t kHelpColumn = 46;
    std::string line = UsageOf(command);
    line.resize(std::max(kHelpColumn, line.size() + 2), ' ');
    return line + command.help + "\n";
}

std::string Help(Commands& /*commands*/, Daemon& /*daemon*/, const Words& words) {
    if (!words.empty()) {
        return Describe(FindCommand(words[0]));
    }
    std::string lines;
    for (const Command& command : kCommands) {
        lines += Describe(command);
    }
    return lines;
}

struct WordCount {
    std::size_t least;
    std::size_t most;
};

WordCount CountWords(const char* arguments) {
    std::istringstream stream(arguments);
    WordCount count = {0, 0};
    for (std::string word; stream >> word; ++count.most) {
        count.least += word.front() == '[' ? 0U : 1U;
    }
    return count;
}

Words Split(std::istringstream& line, std::size_t count) {
    Words words;
    std::string word;
    while (words.size() + 1 < count && line >> word) {
        words.push_back(word);
    }
    if (count > 0 && std::getline(line >> std::ws, word)) {
        words.push_back(word);
    }
    return words;
}

}  // namespace

std::string Commands::Execute(const std::string& line) {
    if (g_utf8_validate(line.c_str(), static_cast<gssize>(line.size()), nullptr) == FALSE) {
        throw Invalid("The command is not in UTF-8");
    }
    std::istringstream stream(line);
    std::string name;
    if (!(stream >> name) || name.front() == '#') {
        return {};
    }
    const Command& command = FindCommand(name);
    const WordCount count = CountWords(command.arguments);
    const Words words = Split(stream, count.most);
    std::string rest;
    if (words.size() < count.least || stream >> rest) {
        throw Invalid("Usage: " + UsageOf(command));
    }
    try {
        return command.execute(*this, daemon_, words);
    } catch (const std::invalid_argument& failure) {
        throw Invalid(failure.what());
    } catch (const CommandError&) {
        throw;
    } catch (const std::exception& failure) {
        throw CommandError(CommandErrorKind::kFailed, failure.what());
    }
}

}  // namespace simulator
