#include "simulator/program/command_line.h"

#include "simulator/program/spawn.h"

#include "interfaces/glib_ptr.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <limits>
#include <memory>
#include <regex>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::TextArrayPtr;
using morvane::TextPtr;

struct ContextRelease {
    void operator()(GOptionContext* context) const noexcept { g_option_context_free(context); }
};
using ContextPtr = std::unique_ptr<GOptionContext, ContextRelease>;

constexpr char kSummary[] =
    "Simulates the Bluetooth stack's daemon, and the phones behind it, on the system bus\n"
    "(or the bus that DBUS_SYSTEM_BUS_ADDRESS names). Commands are read from standard input, one "
    "a line;\n\"help\" lists them. With --exec a private bus is started and COMMAND run on it.";

/// Values that GOption sets.
struct Arguments {
    gint64 phones;
    gint64 contacts;
    gint64 seed;
    gint64 rate;
    gint64 start_delay;
    gint64 announce_delay;
    gint64 state;
    gboolean by_hand;
    gboolean late_size;
    gboolean silent;
    gboolean list;
    gboolean exec;  // only for the help text: --exec ends the options
    gboolean version;
    gboolean help;
    TextPtr instance;
    TextPtr directory;
    TextPtr phone_book;
    TextPtr user_id;
    TextPtr password;
    TextPtr simulator;
    TextArrayPtr commands;
    TextArrayPtr told;
    std::string help_text;  // of --help
};

// Aliases because versions of clang-format disagree about the space in "Arguments::*value".
using NumberMember = gint64 Arguments::*;
using FlagMember = gboolean Arguments::*;
using TextMember = TextPtr Arguments::*;

struct NumberOption {
    const char* name;
    NumberMember value;
    gint64 smallest;
    gint64 largest;
    const char* unit;
    const char* help;
};

constexpr gint64 kAnyNumber = std::numeric_limits<gint64>::max();
constexpr gint64 kOneHour = 3600000;
constexpr std::array<NumberOption, 7> kNumbers = {{
    {"phones", &Arguments::phones, 0, 99, "N", "Phones in reach"},
    {"contacts", &Arguments::contacts, 0, 9999, "N", "Contacts in each phone"},
    {"seed", &Arguments::seed, 0, std::numeric_limits<std::uint32_t>::max(), "N",
     "Equal seeds give equal contents"},
    {"rate", &Arguments::rate, 0, kAnyNumber, "N", "Bytes per second of a transfer, 0: no limit"},
    {"start-delay", &Arguments::start_delay, 0, kOneHour, "MS", "How long a transfer stays queued"},
    {"announce-delay", &Arguments::announce_delay, 0, kOneHour, "MS",
     "From a reply to the announcement of its changes"},
    {"state", &Arguments::state, 0, 255, "N", "Connection state of new sessions"},
}};

struct FlagOption {
    const char* name;
    gchar letter;
    FlagMember value;
    const char* help;
};

constexpr std::array<FlagOption, 7> kFlags = {{
    {"help", 'h', &Arguments::help, "Show the options"},
    {"by-hand", 0, &Arguments::by_hand, "Transfers progress only by command"},
    {"late-size", 0, &Arguments::late_size, "A transfer's size is known only when it starts"},
    {"silent", 0, &Arguments::silent, "Do not announce folder, counters and missed calls"},
    {"list", 0, &Arguments::list, "List the running simulators"},
    {"exec", 0, &Arguments::exec, "Run the command that follows, on a private bus"},
    {"version", 0, &Arguments::version, "Show the version"},
}};

struct TextOption {
    const char* name;
    TextMember value;
    const char* what;
    const char* help;
};

constexpr std::array<TextOption, 6> kTexts = {{
    {"instance", &Arguments::instance, "NAME", "Own com.veltrisonix.NAME"},
    {"directory", &Arguments::directory, "DIR", "Write pulled files here"},
    {"phone-book", &Arguments::phone_book, "FILE.vcf", "Contacts of the first phone"},
    {"user-id", &Arguments::user_id, "TEXT", "Required by the phone with the highest address"},
    {"password", &Arguments::password, "TEXT", "Required by the phone with the highest address"},
    {"simulator", &Arguments::simulator, "PID", "Simulator for --tell, if several are running"},
}};

Arguments Defaults() {
    const Options options;
    Arguments arguments{};
    arguments.phones = options.phones;
    arguments.contacts = options.contacts;
    arguments.seed = options.seed;
    arguments.rate = static_cast<gint64>(options.rate);
    arguments.start_delay = options.start_delay.count();
    arguments.announce_delay = options.announce_delay.count();
    arguments.state = options.connection_state;
    arguments.user_id.reset(g_strdup(options.user_id.c_str()));
    arguments.password.reset(g_strdup(options.password.c_str()));
    return arguments;
}

/// The tables as GOptionEntry. The destructor transfers ownership of the values to the arguments.
/// Texts have the type of file names, which GOption does not convert from the locale's encoding:
/// D-Bus needs UTF-8.
class OptionEntries {
  public:
    explicit OptionEntries(Arguments& to) : commands_(to.commands), told_(to.told) {
        for (const NumberOption& option : kNumbers) {
            Add(option.name, 0, G_OPTION_ARG_INT64, &(to.*option.value), option.unit,
                Help(option.help, std::to_string(to.*option.value)));
        }
        for (const FlagOption& option : kFlags) {
            Add(option.name, option.letter, G_OPTION_ARG_NONE, &(to.*option.value), nullptr,
                option.help);
        }
        for (const TextOption& option : kTexts) {
            const TextPtr& preset = to.*option.value;
            const std::string help = Help(option.help, preset ? preset.get() : "");
            gchar** text = texts_.emplace_back(to.*option.value);
            Add(option.name, 0, G_OPTION_ARG_FILENAME, static_cast<gpointer>(text), option.what,
                help);
        }
        gchar*** commands = commands_;
        Add("do", 0, G_OPTION_ARG_FILENAME_ARRAY, static_cast<gpointer>(commands), "COMMAND",
            "Execute a command at the start (may be repeated)");
        gchar*** told = told_;
        Add("tell", 0, G_OPTION_ARG_FILENAME_ARRAY, static_cast<gpointer>(told), "COMMAND",
            "Execute a command in a running simulator (may be repeated)");
        entries_.push_back({});
    }

    [[nodiscard]] const GOptionEntry* data() const { return entries_.data(); }

  private:
    static std::string Help(const std::string& help, const std::string& preset) {
        return preset.empty() ? help : help + " (" + preset + ")";
    }
    void Add(const char* name, gchar letter, GOptionArg kind, gpointer target, const char* what,
             const std::string& help) {
        helps_.push_back(help);
        entries_.push_back({name, letter, 0, kind, target, helps_.back().c_str(), what});
    }

    std::deque<Out<gchar>> texts_;
    Out<gchar*> commands_;
    Out<gchar*> told_;
    std::deque<std::string> helps_;
    std::vector<GOptionEntry> entries_;
};

// GLib's usage line contains an ellipsis character, which the C locale cannot print.
std::string HelpText(GOptionContext* context) {
    const TextPtr text(g_option_context_get_help(context, TRUE, nullptr));
    return std::regex_replace(text.get(), std::regex("\u2026"), "...");
}

void Parse(const std::vector<std::string>& words, Arguments& to) {
    const OptionEntries entries(to);
    const ContextPtr context(g_option_context_new("[--exec COMMAND [ARG...]]"));
    g_option_context_set_help_enabled(context.get(), FALSE);  // GLib would print it itself
    g_option_context_set_summary(context.get(), kSummary);
    g_option_context_add_main_entries(context.get(), entries.data(), nullptr);
    ErrorPtr error;
    gchar** rest = ToTextArray(words).release();
    const gboolean understood = g_option_context_parse_strv(context.get(), &rest, Out(error));
    const TextArrayPtr owned_rest(rest);
    if (understood == FALSE) {
        throw std::runtime_error(error->message);
    }
    if (to.help != FALSE) {
        to.help_text = HelpText(context.get());
    }
    if (rest[0] != nullptr && rest[1] != nullptr) {
        throw std::runtime_error(std::string("Unexpected argument ") + rest[1]);
    }
}

void Require(bool condition, const std::string& complaint) {
    if (!condition) {
        throw std::runtime_error(complaint);
    }
}

/// GOption ignores the value in "--exec=morvane".
void CheckFlags(const std::vector<std::string>& words) {
    for (const FlagOption& option : kFlags) {
        const std::string name = "--" + std::string(option.name);
        for (const std::string& word : words) {
            Require(word.rfind(name + "=", 0) != 0, name + " takes no value");
        }
    }
}

void CheckNumbers(const Arguments& arguments) {
    for (const NumberOption& option : kNumbers) {
        const gint64 value = arguments.*option.value;
        if (value >= option.smallest && value <= option.largest) {
            continue;
        }
        throw std::runtime_error("--" + std::string(option.name) + " takes a number from " +
                                 std::to_string(option.smallest) + " to " +
                                 std::to_string(option.largest));
    }
}

void Assign(std::string& to, const TextPtr& from) {
    if (from) {
        to = from.get();
    }
}

void AssignNonEmpty(const std::string& option, std::string& to, const TextPtr& from) {
    Assign(to, from);
    if (from && to.empty()) {
        throw std::runtime_error(option + " needs a value");
    }
}

void Assign(std::vector<std::string>& to, const TextArrayPtr& from) {
    for (gchar** text = from.get(); text != nullptr && *text != nullptr; ++text) {
        to.emplace_back(*text);
    }
}

Options ToOptions(const Arguments& arguments) {
    Options options;
    options.phones = static_cast<unsigned>(arguments.phones);
    options.contacts = static_cast<unsigned>(arguments.contacts);
    options.seed = static_cast<std::uint32_t>(arguments.seed);
    options.rate = static_cast<std::uint64_t>(arguments.rate);
    options.start_delay = std::chrono::milliseconds(arguments.start_delay);
    options.announce_delay = std::chrono::milliseconds(arguments.announce_delay);
    options.connection_state = static_cast<std::uint8_t>(arguments.state);
    if (arguments.by_hand != FALSE) {
        options.pace = TransferPace::kByHand;
    }
    options.size_in_reply = arguments.late_size == FALSE;
    options.announce = arguments.silent == FALSE;
    Assign(options.instance, arguments.instance);
    AssignNonEmpty("--directory", options.directory, arguments.directory);
    Assign(options.user_id, arguments.user_id);
    Assign(options.password, arguments.password);
    return options;
}

/// All texts may be sent over the bus, which requires UTF-8.
void CheckEncoding(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (g_utf8_validate(word.c_str(), -1, nullptr) == FALSE) {
            throw std::runtime_error("An argument is not in UTF-8");
        }
    }
}

void CheckDirectory(const std::string& directory) {
    std::error_code ignored;
    if (directory.empty() || std::filesystem::is_directory(directory, ignored)) {
        return;
    }
    throw std::runtime_error("--directory: no such directory: " + directory);
}

/// Refuses options that would have no effect.
void CheckCombination(const CommandLine& line, const std::vector<std::string>& arguments) {
    const bool serves = line.told.empty() && !line.list;
    Require(serves || line.program.empty(), "--exec cannot be combined with --tell or --list");
    Require(line.told.empty() || !line.list, "--list cannot be combined with --tell");
    Require(!line.told.empty() || line.simulator.empty(), "--simulator needs --tell");
    Require(line.phone_book.empty() || line.options.phones > 0, "--phone-book: there is no phone");
    const std::regex allowed("--(tell|list|simulator|instance)(=[^]*)?|[^-][^]*");
    for (std::size_t i = 1; i < arguments.size() && !serves; ++i) {
        Require(arguments[i].empty() || std::regex_match(arguments[i], allowed),
                arguments[i] + " cannot be combined with --tell or --list");
    }
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& words) {
    const auto exec = std::find(words.begin(), words.end(), "--exec");
    const std::vector<std::string> arguments(words.begin(), exec);
    CheckEncoding(arguments);
    CheckFlags(arguments);
    Arguments parsed = Defaults();
    Parse(arguments, parsed);
    CheckNumbers(parsed);
    CommandLine line;
    if (exec != words.end()) {
        line.program.assign(exec + 1, words.end());
        Require(!line.program.empty(), "--exec needs a command");
    }
    line.help = parsed.help_text;
    line.options = ToOptions(parsed);
    line.show_version = parsed.version != FALSE;
    CheckDirectory(line.options.directory);
    AssignNonEmpty("--phone-book", line.phone_book, parsed.phone_book);
    Assign(line.commands, parsed.commands);
    Assign(line.told, parsed.told);
    AssignNonEmpty("--simulator", line.simulator, parsed.simulator);
    line.list = parsed.list != FALSE;
    CheckCombination(line, arguments);
    return line;
}

}  // namespace simulator
