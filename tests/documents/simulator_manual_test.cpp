// Commands and options of the simulator in its documents.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "simulator/program/commands.h"
#include "simulator/simulator_fixture.h"
#include "support/private_bus.h"

#include <algorithm>
#include <regex>
#include <utility>

namespace simulator {
namespace {

using morvane_test::FindAll;
using morvane_test::FindNames;
using morvane_test::Names;
using morvane_test::ReadSource;

class SimulatorDocuments : public SimulatorTest {
  protected:
    /// Three phones; the first has a session with a transfer, which advances only on command.
    void SetUp() override {
        Options options = ByHand();
        options.phones = 3;
        StartSelected(options);
        Access("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
        commands_.emplace(daemon());
    }

    std::optional<Commands> commands_;
};

TEST_F(SimulatorDocuments, ManualListsExactlyTheCommands) {
    const std::string manual = ReadSource("docs/morvane-simulator.1");
    const std::size_t begin = manual.find(".Ss Commands");
    const std::string part = manual.substr(begin, manual.find("\n.Sh", begin) - begin);
    Names described;
    for (const std::string& item : FindAll(part, "\n\\.It Ic ([^\n]*)"))
        for (const std::string& name : FindAll("| " + item, "\\| ([a-z][-a-z]*)(?= |$)"))
            described.insert(name);
    described.erase("off");  // of "on | off"
    EXPECT_EQ(described, FindNames("\n" + commands_->Execute("help"), "\n([-a-z]+) "));
}

// The commands in the table, without its last column; words that begin with "--" are options.
std::vector<std::string> CommandsOfTheGuide() {
    const std::string text = ReadSource("docs/simulator.md");
    return FindAll(text.substr(text.find("\n|---|---|---|\n")),
                   "`([a-z][^`\n]*)`(?=[^\n]*\\|[^|\n]*\\|\n)");
}

TEST_F(SimulatorDocuments, CommandsInGuideAreValid) {
    const std::pair<const char*, std::string> examples[] = {
        {"PATH", "/a/dev_1"},
        {"ADDRESS", "00:00:00:00:00:01"},
        {"ALIAS", "A phone"},
        {"NUMBER", "+12025550001"},
        {"NAME", "Ann Doe"},
        {"TEXT", "a text"},
        {"FILE", morvane_test::SourcePath("README.md")},
    };
    const std::vector<std::string> guide = CommandsOfTheGuide();
    EXPECT_GT(guide.size(), 20U);
    for (std::string command : guide) {
        for (const auto& [word, example] : examples)
            command =
                std::regex_replace(command, std::regex(std::string("\\b") + word + "\\b"), example);
        SetUp();
        EXPECT_NO_THROW(commands_->Execute(command)) << command;
    }
}

TEST(SimulatorProgram, PrintsAnswersAfterFirstLine) {
    const morvane_test::PrivateBus bus;
    EXPECT_EQ(morvane_test::ScriptTree().OutputOf(
                  "env DBUS_SYSTEM_BUS_ADDRESS='" + bus.Address() +
                      "' build/demo/morvane-simulator --do='stall on' --do=sessions --do=quit",
                  0),
              "Serving com.veltrisonix\nStalling of transfers is on\nThere are no sessions\n"
              "The simulator ends: shown at once; an open session ends at the next answer\n");
}

TEST(SimulatorGuide, NamesOptionsInTheManual) {
    const Names known = FindNames(ReadSource("docs/morvane-simulator.1"), "Fl \\\\-([a-z][-a-z]*)");
    for (const std::string& option :
         FindAll(ReadSource("docs/simulator.md"), "[ `(]--([a-z][-a-z]*)"))
        EXPECT_EQ(known.count(option), 1U) << option;
}

TEST_F(SimulatorDocuments, NamePhoneThatRequiresAuthentication) {
    const std::vector<PhoneInfo> phones = daemon().Phones();
    const auto phone = std::find_if(phones.begin(), phones.end(), [](const PhoneInfo& one) {
        return one.demands_authentication;
    });
    ASSERT_NE(phone, phones.end());
    const Options options;
    for (const char* const document :
         {"README.md", "docs/simulator.md", "docs/morvane-simulator.1"}) {
        const std::string text =
            std::regex_replace(ReadSource(document), std::regex(R"(\\\(:e)"), "ë");
        for (const std::string& word :
             {phone->name, phone->address, options.user_id, options.password})
            EXPECT_NE(text.find(word), std::string::npos) << document << ": " << word;
    }
}

}  // namespace
}  // namespace simulator
