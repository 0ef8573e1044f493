// Files, presets, options, keys and commands in the documents exist, and lists of them are
// complete.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "interfaces/glib_ptr.h"
#include "simulator/daemon.h"
#include "support/console.h"
#include "support/conversation.h"
#include "support/messages.h"
#include "support/private_bus.h"
#include "support/programs.h"
#include "support/temporary_directory.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <regex>

namespace morvane_test {
namespace {

constexpr char kAnyDocument[] = "\\.(md|1)$";

bool IsFile(const std::string& name) {
    return std::filesystem::exists(SourcePath(name));
}

/// A document, and the folder for its relative links.
class Documents : public testing::TestWithParam<std::string> {
  protected:
    std::string text_ = ReadSource(GetParam());
    std::string folder_ = GetParam().substr(0, GetParam().rfind('/') + 1);
};

// The fragment of a link to a heading.
std::string AsFragment(std::string heading) {
    std::transform(heading.begin(), heading.end(), heading.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    heading = std::regex_replace(heading, std::regex("[^-\\w ]"), "");
    return std::regex_replace(heading, std::regex(" "), "-");
}

TEST_P(Documents, LinkToExistingFilesAndHeadings) {
    for (const std::string& link : FindAll(text_, "\\]\\(([^):]+)\\)")) {
        const std::size_t end = std::min(link.find('#'), link.size());
        const std::string file = end == 0 ? GetParam() : folder_ + link.substr(0, end);
        ASSERT_TRUE(IsFile(file)) << link;
        if (end == link.size()) continue;
        const std::vector<std::string> headings = FindAll(ReadSource(file), "\n#+ ([^\n]+)");
        EXPECT_TRUE(std::any_of(headings.begin(), headings.end(), [&](const std::string& heading) {
            return AsFragment(heading) == link.substr(end + 1);
        })) << link;
    }
}

TEST_P(Documents, NameExistingFiles) {
    const std::string folders =
        "app|benchmarks|client|cmake|console|docs|examples|interfaces|packaging|phonebook|play|"
        "scripts|simulator|"
        "support|tests|transfer|uuid";
    for (const std::string& path :
         FindAll(text_, "(?:^|[^-\\w./~$>])((?:" + folders + ")/[-\\w./]*\\w)"))
        EXPECT_TRUE(IsFile(path) || IsFile(folder_ + path)) << path;
    for (const std::string& name : FindAll(text_, "`([-\\w]+\\.(?:cpp|h|supp|keys))`"))
        EXPECT_FALSE(FindSources("/" + name + "$").empty()) << name;
}

// Without a preset CMake would use Make, which may not be installed.
TEST_P(Documents, UseExistingAndConfiguredPresets) {
    const Names presets = FindNames(ReadSource("CMakePresets.json"), "\"name\": \"(\\w+)\"");
    for (const std::string& preset : FindAll(text_, "--preset[ =](\\w+)"))
        EXPECT_EQ(presets.count(preset), 1U) << preset;
    for (const std::string& block : FindAll(text_, "((?:    [^\n]*\n)+)")) {
        const Names configured = FindNames(block, "cmake --preset (\\w+)");
        for (const std::string& preset : FindAll(block, "(?:--build|ctest) --preset (\\w+)"))
            EXPECT_EQ(configured.count(preset), 1U) << block;
        EXPECT_TRUE(FindAll(block, "(cmake (?:-[BSDG]|[./]))").empty()) << block;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Documents, testing::ValuesIn(FindSources(kAnyDocument)),
                         [](const auto& document) { return AsTestName(document.param); });

/// A picture drawn by hand.
class Drawings : public testing::TestWithParam<std::string> {
  protected:
    std::string text_ = ReadSource("docs/" + GetParam());
};

TEST_P(Drawings, AreWellFormed) {
    const GMarkupParser parser = {};
    const std::unique_ptr<GMarkupParseContext, decltype(&g_markup_parse_context_free)> context(
        g_markup_parse_context_new(&parser, GMarkupParseFlags{}, nullptr, nullptr),
        g_markup_parse_context_free);
    morvane::ErrorPtr error;
    bool is_good = g_markup_parse_context_parse(
        context.get(), text_.data(), static_cast<gssize>(text_.size()), morvane::Out(error));
    is_good = is_good && g_markup_parse_context_end_parse(context.get(), morvane::Out(error));
    EXPECT_TRUE(is_good) << error->message;
}

TEST_P(Drawings, NameExistingIdentifiers) {
    std::string code;
    for (const std::string& name :
         FindSources("^(app|client|console|interfaces|phonebook|transfer)/.*[.](h|cpp)$"))
        code += ReadSource(name);
    const Names identifiers = FindNames(code, "(\\w+)");
    const std::vector<std::string> named = FindAll(text_, "class=\"code\"[^>]*>([^<]*)<");
    EXPECT_GT(named.size(), 5U);
    for (const std::string& words : named)
        for (const std::string& word : FindAll(words, "(\\w{2,})"))
            EXPECT_EQ(identifiers.count(word), 1U) << word;
}

INSTANTIATE_TEST_SUITE_P(Architecture, Drawings,
                         testing::ValuesIn(FindAll(ReadSource("docs/architecture.md"),
                                                   "\\]\\(([a-z]+[.]svg)\\)")),
                         [](const auto& drawing) { return AsTestName(drawing.param); });

TEST(ExamplesReadme, NamesEveryExample) {
    Names examples;
    for (const std::string& file : FindSources("^examples/.*\\.keys$"))
        examples.insert(file.substr(file.find('/') + 1, file.rfind('.') - file.find('/') - 1));
    EXPECT_EQ(FindNames(ReadSource("examples/README.md"), "`([-\\w]+)\\.keys`"), examples);
}

TEST(Contributing, ShowsTheOutputOfTheTestScript) {
    const std::string output = ScriptTree().OutputOf("scripts/test", 0);
    EXPECT_EQ(std::regex_replace(output, std::regex("\\d+ (?=passed|as expected)"), "N "),
              FencedBlock(ReadSource("CONTRIBUTING.md"), "text"));
}

// Each mutant in the list: location, operator and diff.
std::vector<std::string> ListedMutants(const std::string& list) {
    return FindAll(list,
                   "\n([a-z]+/\\w+\\.(?:cpp|h):\\d+: [a-z ]+\n--- .*\n\\+\\+\\+ .*\n@@ (?:.+\n)+)");
}

std::string ListMutants(const std::string& arguments, int status) {
    return ScriptTree().OutputOf("'" + SourcePath("scripts/mutants") + "' --list " + arguments,
                                 status) +
           "\n";
}

TEST(Mutants, AreListedWithDiffs) {
    const std::vector<std::string> mutants = ListedMutants(ListMutants("--count 50", 0));
    EXPECT_EQ(Names(mutants.begin(), mutants.end()).size(), 50U);
    for (const std::string& mutant : mutants) {
        EXPECT_FALSE(FindAll(mutant, "\n([-+][^-+].*)").empty()) << mutant;
        EXPECT_TRUE(IsFile(mutant.substr(0, mutant.find(':')))) << mutant;
    }
}

TEST(Mutants, DependOnlyOnSeedAndFiles) {
    const std::string list = ListMutants("--seed 1 --count 5", 0);
    EXPECT_EQ(ListMutants("--seed 1 --count 5", 0), list);
    EXPECT_NE(ListMutants("--seed 2 --count 5", 0), list);
    const std::vector<std::string> mutants = ListedMutants(ListMutants("--count 5 uuid", 0));
    EXPECT_EQ(mutants.size(), 5U);
    for (const std::string& mutant : mutants) EXPECT_EQ(mutant.rfind("uuid/", 0), 0U) << mutant;
    ListMutants("no_such_file.cpp", 2);
}

// Options in the output of --help: "  -h, --help" or "  --phones=N" at the start of a line.
Names OptionsInHelp(const std::string& help) {
    Names options = FindNames(help, "\n\\s+(--?[a-z][-a-z]*)");
    const Names further = FindNames(help, "\n\\s+-[a-z], (--[a-z][-a-z]*)");
    options.insert(further.begin(), further.end());
    return options;
}

// Options on the lines of a man page that begin with one of `macros`.
Names OptionsInManual(const std::string& manual, const std::string& macros) {
    Names options;
    for (const std::string& line : FindAll(manual, "\n(\\.(?:" + macros + ") [^\n]*)"))
        for (const std::string& option : FindAll(line, "Fl ((?:\\\\-)?[a-z][-a-z]*)"))
            options.insert("-" + std::regex_replace(option, std::regex("\\\\"), ""));
    return options;
}

struct Program {
    const char* name;
    int status_of_help;
};

class Manuals : public testing::TestWithParam<Program> {
  protected:
    Names listed_ = OptionsInHelp(ScriptTree().OutputOf(
        std::string("build/demo/") + GetParam().name + " --help", GetParam().status_of_help));
    std::string manual_ = ReadSource(std::string("docs/") + GetParam().name + ".1");
};

TEST_P(Manuals, DescribeAllOptionsOfHelp) {
    EXPECT_FALSE(listed_.empty());
    EXPECT_EQ(OptionsInManual(manual_, "It"), listed_);
}

TEST_P(Manuals, ListAllOptionsInSynopsis) {
    listed_.erase("-h");
    EXPECT_EQ(OptionsInManual(manual_.substr(0, manual_.find(".Sh DESCRIPTION")), "Op|Fl"),
              listed_);
}

INSTANTIATE_TEST_SUITE_P(Programs, Manuals,
                         testing::Values(Program{"morvane", 255}, Program{"morvane-play", 0},
                                         Program{"morvane-simulator", 0}),
                         [](const auto& program) { return AsTestName(program.param.name); });

struct Menu {
    const char* name;  ///< the name in the man page
    PromptId id;
};

void PrintTo(const Menu& menu, std::ostream* stream) {
    *stream << menu.name;
}

class Menus : public testing::TestWithParam<Menu> {};

// Filter menus differ: the manual describes their common keys.
TEST_P(Menus, HaveTheKeysInTheManual) {
    Names keys = FindNames(AsSeen(MenuOf(GetParam().id)), "\n (\\w)\\) ");
    if (GetParam().id == PromptId::kPullAllFilters) keys = {"d", "h"};
    const std::string manual = ReadSource("docs/morvane.1");
    const std::string from = manual.substr(manual.find(std::string(".It ") + GetParam().name));
    EXPECT_EQ(FindNames(from.substr(0, from.find("\n.It")).substr(0, from.find("\n.El")),
                        "\n\\.Ic (\\w)\n"),
              keys);
}

INSTANTIATE_TEST_SUITE_P(All, Menus,
                         testing::Values(Menu{"Main menu", PromptId::kMain},
                                         Menu{"Phonebook menu", PromptId::kPhonebookMenu},
                                         Menu{"Filter menu", PromptId::kPullAllFilters},
                                         Menu{"Transfer menu", PromptId::kTransfer}),
                         [](const auto& menu) { return AsTestName(menu.param.name); });

// The relevant rules of a distribution's system bus, and those for a daemon, which admit no client.
std::string SystemBusPolicies() {
    return R"(<policy context="default">
  <allow user="*"/>
  <deny own="*"/>
  <deny send_type="method_call"/>
  <allow send_type="signal"/>
  <allow send_requested_reply="true" send_type="method_return"/>
  <allow send_requested_reply="true" send_type="error"/>
  <allow receive_type="method_call"/>
  <allow receive_type="method_return"/>
  <allow receive_type="error"/>
  <allow receive_type="signal"/>
  <allow send_destination="org.freedesktop.DBus"/>
</policy>
<policy user=")" +
           std::to_string(geteuid()) + R"(">
  <allow own="com.veltrisonix"/>
</policy>
)";
}

class PolicyExample : public testing::Test {
  protected:
    void Launch(const std::string& policies) {
        bus_.emplace(policies);
        daemon_.emplace(bus_->Address(), simulator::Options::Scripted());
        ConsoleOptions options;
        options.bus_address = bus_->Address();
        options.directory = directory_.Path();
        console_.emplace(options);
    }
    void TearDown() override { console_->Finish(); }

    TemporaryDirectory directory_;
    std::optional<PrivateBus> bus_;
    std::optional<simulator::Daemon> daemon_;
    std::optional<Console> console_;
};

TEST_F(PolicyExample, IsRequiredOnSystemBus) {
    Launch(SystemBusPolicies());
    console_->ExpectError("AccessDenied");
    console_->ExpectExit(0, Console::Rest::kIgnored);
}

TEST_F(PolicyExample, AdmitsItsGroup) {
    const std::string policy = ReadSource("packaging/morvane.conf");
    const std::regex group("group=\"bluetooth\"");
    ASSERT_TRUE(std::regex_search(policy, group));
    std::ofstream(directory_.File("morvane.conf"))
        << std::regex_replace(policy, group, "group=\"" + std::to_string(getegid()) + "\"");
    Launch(SystemBusPolicies() + "<include>" + directory_.File("morvane.conf") + "</include>\n");
    console_->Await("Found Client ");
    console_->Await(Prompt());
}

/// The command in the manual for untrusted phones.
class PipeThroughCat : public ConversationTest {
  protected:
    void LaunchAsTheManualSays() {
        const std::vector<std::string> pipes =
            FindAll(ReadSource("docs/morvane.1"), "\n\\.Dl \\$ morvane( \\| [^\n]*)");
        ASSERT_EQ(pipes.size(), 1U);
        ConsoleOptions options;
        options.program = "/bin/sh";
        // This shell stays in the terminal's foreground process group, unlike an interactive one:
        // it must not exit on Ctrl-C.
        options.arguments = {"-c",
                             "trap : INT; " + Launcher() + " '" + ToolPath() + "'" + pipes[0]};
        Launch(options);
    }
    static std::string Visible(const std::string& text) {
        return std::regex_replace(text, std::regex("\x1b"), "^[");
    }
};

TEST_F(PipeThroughCat, DisplaysPromptsAndEscapesControlCharacters) {
    StartDaemon();
    daemon().AddDevice(kPhonePath, kPhoneAddress, "a\x1b[5n");
    LaunchAsTheManualSays();
    Await(Visible(Red(" > ")));
    EnterAndAwait("l", " | a^[[5n\n");
    Await(Visible(Prompt()));
    EnterAndAwait("u", Visible(ValuePrompt("/User Id")));
    EnterAndAwait("engineer", Visible(Prompt()));
    PressControlC();
    Type("h");
    ExpectExit(0);
    EXPECT_EQ(console().Output().find('\x1b'), std::string::npos);
}

TEST(Changelog, ContainsTheVersionOfThePrograms) {
    const std::vector<std::string> versions =
        FindAll(ReadSource("CHANGELOG.md"), "\n## \\[([0-9.]+)\\] - ");
    ASSERT_FALSE(versions.empty());
    EXPECT_EQ(ScriptTree().OutputOf("build/demo/morvane-simulator --version", 0),
              "morvane-simulator " + versions.front() + "\n");
}

constexpr char kChangelog[] = R"(# Changelog

- Not an entry.

## [Unreleased]

### Added

- Nothing yet.

## [1.10.0] - 2027-01-01

### Added

- One entry, which is longer than a line of a Debian changelog and therefore
  wrapped again.
- Another.

### Fixed

- A third.

## [1.0.0] - 2026-11-20

- The first.
)";

constexpr char kDebianChangelog[] = R"(morvane (1.10.0) unstable; urgency=medium

  * Added
    - One entry, which is longer than a line of a Debian changelog and
      therefore wrapped again.
    - Another.
  * Fixed
    - A third.

 -- A Name <a@b.invalid>  Fri, 01 Jan 2027 12:00:00 +0000

morvane (1.0.0) unstable; urgency=medium

    - The first.

 -- A Name <a@b.invalid>  Fri, 20 Nov 2026 12:00:00 +0000
)";

TEST(Changelog, IsConvertedForDebian) {
    const ScriptTree tree;
    std::ofstream(tree.File("changelog")) << kChangelog;
    EXPECT_EQ(tree.OutputOf("'" + SourcePath("packaging/debian-changelog") +
                                "' 'A Name <a@b.invalid>' <changelog",
                            0),
              kDebianChangelog);
}

}  // namespace
}  // namespace morvane_test
