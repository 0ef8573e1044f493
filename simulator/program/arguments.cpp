#include "simulator/program/arguments.h"

#include "simulator/program/command_error.h"
#include "simulator/program/command_table.h"
#include "simulator/program/known_names.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <optional>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::VariantPtr;

constexpr char kErrorPrefix[] = "com.veltrisonix.Error.";

/// Context for resolving a word.
struct Situation {
    Daemon& daemon;
    bool insists;          ///< accepts unknown names
    const Words& earlier;  ///< the arguments before it
};

using Names = std::vector<std::string>;

/// Context for completing an argument.
struct Typing {
    Daemon& daemon;
    const Names& earlier;      ///< the arguments before it
    const std::string& typed;  ///< the beginning of the argument
};

struct Kind {
    const char* name;
    Word (*resolve)(const Situation& situation, const std::string& word);
    Names (*complete)(const Typing& typing) = nullptr;
    bool is_verbatim = false;  ///< the rest of the line, including quotation marks and blanks
};

CommandError NoSuch(const std::string& message) {
    return {CommandErrorKind::kNoSuchObject, message};
}

Word Same(const std::string& text) {
    return {text, text};
}

Word Plain(const Situation& /*situation*/, const std::string& word) {
    return Same(word);
}

Word PathWord(const std::string& path) {
    return {path, LastPart(path, '/')};
}

/// Resolves the word `newest`, such as "session", to the last path, and other words as a path or
/// its last element.
std::optional<Word> FindPath(const char* newest, const std::vector<std::string>& paths,
                             const std::string& word) {
    if (word == newest) {
        return paths.empty() ? throw NoSuch(std::string("There is no ") + newest)
                             : PathWord(paths.back());
    }
    for (const std::string& path : paths) {
        if (word == path || word == LastPart(path, '/')) {
            return PathWord(path);
        }
    }
    return std::nullopt;
}

std::optional<Word> FindSession(Daemon& daemon, const std::string& word) {
    return FindPath("session", daemon.Sessions(), word);
}

std::optional<Word> FindTransfer(Daemon& daemon, const std::string& word) {
    return FindPath("transfer", daemon.Transfers(), word);
}

bool Begins(const std::string& text, const std::string& folded) {
    return Folded(text).rfind(folded, 0) == 0;
}

using MatchesDevice = bool (*)(const PhoneInfo& device, const std::string& word);

// In order of precedence.
constexpr MatchesDevice kDeviceMatches[] = {
    [](const PhoneInfo& device, const std::string& word) { return device.path == word; },
    [](const PhoneInfo& device, const std::string& word) {
        return Folded(device.address) == Folded(word) || Folded(device.name) == Folded(word);
    },
    [](const PhoneInfo& device, const std::string& word) {
        return Begins(device.address, Folded(word)) || Begins(device.name, Folded(word));
    },
};

Word OnlyDevice(const std::vector<PhoneInfo>& found, const std::string& word) {
    if (found.size() == 1) {
        const PhoneInfo& device = found.front();
        return {device.path, device.name.empty() ? device.path : device.name};
    }
    std::string list;
    for (const PhoneInfo& device : found) {
        list += (list.empty() ? "" : ", ") + device.name + " (" + device.address + ")";
    }
    throw NoSuch(word + " matches several devices: " + list);
}

std::optional<Word> FindDevice(Daemon& daemon, const std::string& word) {
    const std::vector<PhoneInfo> devices = daemon.Devices();
    for (const MatchesDevice matches : kDeviceMatches) {
        std::vector<PhoneInfo> found;
        std::copy_if(devices.begin(), devices.end(), std::back_inserter(found),
                     [&](const PhoneInfo& device) { return matches(device, word); });
        if (!found.empty() && !word.empty()) {
            return OnlyDevice(found, word);
        }
    }
    return std::nullopt;
}

using FindObject = std::optional<Word> (*)(Daemon& daemon, const std::string& word);

/// Resolves a word to an object that must exist.
template <FindObject Find, const char* Name>
Word Existing(const Situation& situation, const std::string& word) {
    if (const std::optional<Word> found = Find(situation.daemon, word)) {
        return *found;
    }
    throw NoSuch(std::string("No ") + Name + " " + word + " (try " + Name + "s)");
}

constexpr char kSession[] = "session";
constexpr char kTransfer[] = "transfer";
constexpr char kPhone[] = "phone";

Word NewPath(const Situation& /*situation*/, const std::string& word) {
    if (g_variant_is_object_path(word.c_str()) == FALSE) {
        throw Invalid("Not an object path: " + word);
    }
    return Same(word);
}

/// A path need not exist: faults can be set before an object is added.
Word Object(const Situation& situation, const std::string& word) {
    if (word.rfind('/', 0) == 0) {
        return PathWord(NewPath(situation, word).value);
    }
    for (const FindObject find : {FindSession, FindTransfer, FindDevice}) {
        if (const std::optional<Word> found = find(situation.daemon, word)) {
            return *found;
        }
    }
    throw NoSuch("No object " + word + " (try sessions, transfers or phones)");
}

Word AnyObject(const Situation& situation, const std::string& word) {
    return word == kAnyPath ? Word{kAnyPath, "all objects"} : Object(situation, word);
}

Word Method(const Situation& situation, const std::string& word) {
    return {ResolveMethod(word, situation.insists), LastPart(word, '.')};
}

Word Interface(const Situation& situation, const std::string& word) {
    const std::string interface = ResolveInterface(word, situation.insists);
    return {interface, LastPart(interface, '.')};
}

/// A path need not exist, see `Object`.
Word Property(const Situation& situation, const std::string& word) {
    const Word& object = situation.earlier.front();
    const Word& interface = situation.earlier.back();
    Word property = Same(ResolveProperty(interface.value, word, situation.insists));
    if (!situation.insists && object.value != kAnyPath &&
        situation.daemon.Lacks(object.value, interface.value)) {
        throw Invalid(object.label + " has no interface " + interface.label);
    }
    return property;
}

Word ErrorName(const Situation& /*situation*/, const std::string& word) {
    const std::string name = word.find('.') == std::string::npos ? kErrorPrefix + word : word;
    if (g_dbus_is_interface_name(name.c_str()) == FALSE) {
        throw Invalid("Not an error name: " + word);
    }
    return Same(name);
}

Word Value(const Situation& /*situation*/, const std::string& word) {
    ParseValue(word);
    return Same(word);
}

Word Tuple(const Situation& /*situation*/, const std::string& word) {
    if (g_variant_is_of_type(ParseValue(word).get(), G_VARIANT_TYPE_TUPLE) == FALSE) {
        throw Invalid("Not a tuple: " + word +
                      " (write ('text', uint32 1), or (5,) for one value)");
    }
    return Same(word);
}

std::uint64_t NumberUpTo(std::uint64_t largest, const std::string& text) {
    guint64 number = 0;
    if (g_ascii_string_to_unsigned(text.c_str(), 10, 0, largest, &number, nullptr) == FALSE) {
        throw Invalid("Not a number from 0 to " + std::to_string(largest) + ": " + text);
    }
    return number;
}

template <typename Integer>
Word Number(const Situation& /*situation*/, const std::string& word) {
    return Same(std::to_string(NumberUpTo(std::numeric_limits<Integer>::max(), word)));
}

/// Longer floods would block the main loop for minutes.
constexpr std::uint64_t kMostInAFlood = 1000000;

Word Count(const Situation& /*situation*/, const std::string& word) {
    return Same(std::to_string(NumberUpTo(kMostInAFlood, word)));
}

/// Makes the path absolute for the answer: the command may be sent by a process in another
/// directory.
Word File(const Situation& /*situation*/, const std::string& word) {
    return Same(std::filesystem::absolute(word).string());
}

Word OnOrOff(const Situation& /*situation*/, const std::string& word) {
    if (word != "on" && word != "off") {
        throw Invalid("Neither on nor off: " + word);
    }
    return Same(word);
}

template <auto List, const char* Newest>
Names Paths(const Typing& typing) {
    Names names;
    for (const std::string& path : (typing.daemon.*List)()) {
        names.push_back(LastPart(path, '/'));
    }
    if (!names.empty()) {
        names.emplace_back(Newest);
    }
    return names;
}

Names Phones(const Typing& typing) {
    Names names;
    for (const PhoneInfo& device : typing.daemon.Devices()) {
        names.push_back(device.name.empty() ? device.address : device.name);
    }
    return names;
}

constexpr auto kSessions = Paths<&Daemon::Sessions, kSession>;
constexpr auto kTransfers = Paths<&Daemon::Transfers, kTransfer>;

Names Objects(const Typing& typing) {
    Names names;
    for (const auto list : {kSessions, kTransfers, &Phones}) {
        const Names some = list(typing);
        names.insert(names.end(), some.begin(), some.end());
    }
    return names;
}

Names AnyObjects(const Typing& typing) {
    Names names = Objects(typing);
    names.emplace_back(kAnyPath);
    return names;
}

Names Methods(const Typing& /*typing*/) {
    return MethodNames("");
}

Names Interfaces(const Typing& /*typing*/) {
    return InterfaceNames();
}

Names Properties(const Typing& typing) {
    return PropertyNames(ResolveInterface(typing.earlier.back(), false));
}

Names CommandsToDescribe(const Typing& /*typing*/) {
    return CommandNames();
}

Names OnAndOff(const Typing& /*typing*/) {
    return {"on", "off"};
}

Names Files(const Typing& typing) {
    namespace fs = std::filesystem;
    const std::string folder = typing.typed.substr(0, typing.typed.rfind('/') + 1);
    Names names;
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? "." : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        names.push_back(folder + entry->path().filename().string() +
                        (entry->is_directory(ignored) ? "/" : ""));
    }
    return names;
}

constexpr Kind kKinds[] = {
    {"SESSION", Existing<FindSession, kSession>, kSessions},
    {"TRANSFER", Existing<FindTransfer, kTransfer>, kTransfers},
    {"PHONE", Existing<FindDevice, kPhone>, Phones},
    {"OBJECT", Object, Objects},
    {"OBJECT|*", AnyObject, AnyObjects},
    {"METHOD", Method, Methods},
    {"INTERFACE", Interface, Interfaces},
    {"PROPERTY", Property, Properties},
    {"ERROR", ErrorName},
    {"VALUE", Value, nullptr, true},
    {"TUPLE", Tuple, nullptr, true},
    {"STATE", Number<std::uint8_t>},
    {"BYTES", Number<std::uint64_t>},
    {"COUNT", Count},
    {"on|off", OnOrOff, OnAndOff},
    {"PATH", NewPath},
    {"COMMAND", Plain, CommandsToDescribe},
    {"ADDRESS", Plain},
    {"NUMBER", Plain},
    {"FILE", File, Files},
    {"ALIAS", Plain},
    {"NAME", Plain},
    {"MESSAGE", Plain, nullptr, true},
    {"TEXT", Plain, nullptr, true},
};

const Kind& FindKind(const std::string& name) {
    const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const Kind& kind) { return name == kind.name; });
    return found == std::end(kKinds) ? throw std::logic_error("No kind of argument: " + name)
                                     : *found;
}

bool HasMore(std::istringstream& line) {
    return (line >> std::ws).peek() != std::istringstream::traits_type::eof();
}

std::string NextWord(std::istringstream& line) {
    std::string word;
    if (!(line >> std::quoted(word))) {
        throw Invalid("A quotation mark is missing at the end");
    }
    return word;
}

std::string LastWord(std::istringstream& line, const Kind& kind) {
    if (!kind.is_verbatim && line.peek() == '"') {
        return NextWord(line);
    }
    std::string rest;
    std::getline(line, rest);
    if (!kind.is_verbatim) {
        rest.erase(rest.find_last_not_of(" \t\r") + 1);
    }
    return rest;
}

}  // namespace

VariantPtr ParseValue(const std::string& text) {
    ErrorPtr error;
    VariantPtr value(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, Out(error)));
    if (!value) {
        throw Invalid("Not a value: " + text + " (" + error->message + ")");
    }
    return value;
}

std::uint64_t ParseNumber(const std::string& text) {
    return NumberUpTo(std::numeric_limits<std::uint64_t>::max(), text);
}

std::vector<std::string> KindsIn(const std::string& arguments) {
    std::vector<std::string> kinds;
    std::istringstream stream(arguments);
    for (std::string kind; stream >> kind;) {
        const bool is_optional = kind.front() == '[';
        kinds.push_back(is_optional ? kind.substr(1, kind.size() - 2) : kind);
    }
    return kinds;
}

std::vector<std::string> KnownArguments(Daemon& daemon, const std::string& kind,
                                        const std::vector<std::string>& earlier,
                                        const std::string& typed) {
    const auto complete = FindKind(kind).complete;
    return complete == nullptr ? Names() : complete({daemon, earlier, typed});
}

Words ReadArguments(Daemon& daemon, const std::string& usage, const std::string& arguments,
                    bool insists, std::istringstream& line) {
    const std::vector<std::string> kinds = KindsIn(arguments);
    const bool last_is_optional = arguments.find('[') != std::string::npos;
    std::vector<std::string> texts;
    while (texts.size() < kinds.size() && HasMore(line)) {
        const bool is_last = texts.size() + 1 == kinds.size();
        texts.push_back(is_last ? LastWord(line, FindKind(kinds.back())) : NextWord(line));
    }
    if (texts.size() + (last_is_optional ? 1 : 0) < kinds.size() || HasMore(line)) {
        throw Invalid("Usage: " + usage);
    }
    Words words;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        words.push_back(FindKind(kinds[i]).resolve({daemon, insists, words}, texts[i]));
    }
    return words;
}

}  // namespace simulator
