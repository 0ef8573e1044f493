#include "play/command_line.h"

#include <getopt.h>

#include <algorithm>
#include <array>

namespace play {
namespace {

struct OptionRow {
    const char* name;
    char letter;
    const char* value;  ///< name of the option's value; null if it has none
    const char* help;
    void (*apply)(CommandLine& to, const std::string& value);
};

void ApplyTimeout(CommandLine& to, const std::string& value) {
    to.play.limit = ParseDuration(value);
    if (!to.play.limit) {
        throw std::runtime_error("--timeout takes a time such as 10s, 500ms or 2min");
    }
}

void Choose(CommandLine& to, CommandLine::Mode mode) {
    using Mode = CommandLine::Mode;
    if (to.mode == (mode == Mode::kRecord ? Mode::kType : Mode::kRecord)) {
        throw std::runtime_error("--record and --type exclude each other");
    }
    to.mode = mode;
}

constexpr std::array<OptionRow, 8> kOptions = {{
    {"record", 'r', nullptr, "Write the file from a session in this terminal",
     [](CommandLine& to, const std::string&) { Choose(to, CommandLine::Mode::kRecord); }},
    {"type", 'y', nullptr, "Type the lines of standard input at the prompts",
     [](CommandLine& to, const std::string&) { Choose(to, CommandLine::Mode::kType); }},
    {"update", 'u', nullptr, "Write what is displayed into the files",
     [](CommandLine& to, const std::string&) { to.play.update = true; }},
    {"tap", 't', nullptr, "Print the results in the Test Anything Protocol",
     [](CommandLine& to, const std::string&) { to.tap = true; }},
    {"timeout", 'T', "TIME", "How long each line is awaited (10s)", ApplyTimeout},
    {"simulator", 'S', "PROGRAM", "Send commands of the files to it (morvane-simulator)",
     [](CommandLine& to, const std::string& value) { to.play.simulator = value; }},
    {"help", 'h', nullptr, "Show the options",
     [](CommandLine& to, const std::string&) { to.mode = CommandLine::Mode::kHelp; }},
    {"version", 'V', nullptr, "Show the version",
     [](CommandLine& to, const std::string&) { to.mode = CommandLine::Mode::kVersion; }},
}};

const OptionRow& FindOption(int letter) {
    return *std::find_if(kOptions.begin(), kOptions.end(),
                         [letter](const OptionRow& row) { return row.letter == letter; });
}

// For getopt_long(). Only "-h" is also a short option.
std::vector<option> LongOptions() {
    std::vector<option> options;
    options.reserve(kOptions.size() + 1);
    for (const OptionRow& row : kOptions) {
        options.push_back({row.name, row.value == nullptr ? no_argument : required_argument,
                           nullptr, row.letter});
    }
    options.push_back({nullptr, 0, nullptr, 0});
    return options;
}

void ParseOptions(std::vector<std::string> words, CommandLine& to) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const std::vector<option> options = LongOptions();
    const int count = static_cast<int>(words.size());
    opterr = 0;
    for (;;) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the only thread
        const int letter = getopt_long(count, pointers.data(), "h", options.data(), nullptr);
        if (letter == -1) {
            break;
        }
        if (letter == '?') {
            throw std::runtime_error(std::string("invalid option ") +
                                     pointers.at(static_cast<std::size_t>(optind) - 1));
        }
        FindOption(letter).apply(to, optarg == nullptr ? "" : optarg);
    }
    to.files.assign(pointers.begin() + optind, pointers.end() - 1);
}

void CheckFiles(const CommandLine& line) {
    using Mode = CommandLine::Mode;
    if (line.mode == Mode::kHelp || line.mode == Mode::kVersion) {
        return;
    }
    if (line.mode == Mode::kType && !line.files.empty()) {
        throw std::runtime_error("--type takes no file, but standard input");
    }
    if (line.mode != Mode::kType && line.files.empty()) {
        throw std::runtime_error("no file named");
    }
    if (line.mode == Mode::kRecord && line.files.size() > 1) {
        throw std::runtime_error("--record takes one file");
    }
    if (line.mode != Mode::kPlay && (line.tap || line.play.update)) {
        throw std::runtime_error("--record and --type take neither --tap nor --update");
    }
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
    const auto separator = std::find(arguments.begin(), arguments.end(), "--");
    ParseOptions({arguments.begin(), separator}, line);
    if (separator != arguments.end()) {
        line.play.command.assign(separator + 1, arguments.end());
        if (line.play.command.empty()) {
            throw std::runtime_error("no program behind --");
        }
    }
    CheckFiles(line);
    return line;
}

std::string HelpText() {
    std::string text =
        "Usage: morvane-play [OPTION...] FILE... [-- PROGRAM [ARGUMENT...]]\n"
        "       morvane-play --record FILE [-- PROGRAM [ARGUMENT...]]\n"
        "       morvane-play --type [-- PROGRAM [ARGUMENT...]]\n"
        "Plays sessions of morvane, or of PROGRAM, and compares what is displayed with the "
        "files.\n\n";
    for (const OptionRow& row : kOptions) {
        constexpr std::size_t kWidth = 26;
        std::string name = std::string(row.letter == 'h' ? "  -h, --" : "  --") + row.name;
        if (row.value != nullptr) {
            name += std::string("=") + row.value;
        }
        name.resize(std::max(kWidth, name.size()), ' ');
        text += name + row.help + "\n";
    }
    return text;
}

}  // namespace play
