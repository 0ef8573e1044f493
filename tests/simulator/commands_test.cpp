#include "simulator/program/commands.h"
#include "simulator/program/command_line.h"
#include "simulator/simulator_fixture.h"

#include <sstream>
#include <utility>

namespace simulator {
namespace {

using std::string;

TEST(SimulatorCommandLine, ReadsItsOptionsOrLeavesTheDefaults) {
    const CommandLine bare = ParseCommandLine({"morvane-simulator"});
    EXPECT_EQ(bare.options.phones, Options().phones);
    EXPECT_EQ(bare.options.user_id, Options().user_id);
    EXPECT_EQ(bare.options.pace, Options().pace);
    EXPECT_TRUE(bare.options.announce);
    EXPECT_FALSE(bare.show_version);
    EXPECT_TRUE(bare.commands.empty());
    const CommandLine line = ParseCommandLine(
        {"morvane-simulator", "--phones=1", "--contacts", "7", "--seed=9", "--rate=0", "--by-hand",
         "--late-size", "--silent", "--directory=/", "--instance=two", "--user-id=Jörg",
         "--password=p", "--state=3", "--do", "content é", "--do", "come-back"});
    EXPECT_EQ(line.options.phones, 1U);
    EXPECT_EQ(line.options.contacts, 7U);
    EXPECT_EQ(line.options.seed, 9U);
    EXPECT_EQ(line.options.rate, 0U);
    EXPECT_EQ(line.options.pace, TransferPace::kByHand);
    EXPECT_FALSE(line.options.size_in_reply);
    EXPECT_FALSE(line.options.announce);
    EXPECT_EQ(line.options.directory, "/");
    EXPECT_EQ(line.options.instance, "two");
    EXPECT_EQ(line.options.user_id, "Jörg");
    EXPECT_EQ(line.options.password, "p");
    EXPECT_EQ(line.options.connection_state, 3);
    EXPECT_EQ(line.commands, (Signals{"content é", "come-back"}));
}

TEST(SimulatorCommandLine, RefusesWhatItDoesNotKnow) {
    const std::pair<const char*, const char*> rows[] = {
        {"--colour", "Unknown option --colour"},
        {"stray", "Unexpected argument stray"},
        {"--phones=100", "--phones takes a number from 0 to 99"},
        {"--phones=-1", "--phones takes a number from 0 to 99"},
        {"--user-id=J\xf6rg", "An argument is not in UTF-8"},
        {"--directory=/nonexistent", "--directory: no such directory: /nonexistent"}};
    const auto parse = [](const char* argument) {
        ParseCommandLine({"morvane-simulator", argument});
    };
    for (const auto& [argument, failure] : rows)
        EXPECT_EQ(FailureOf([&, text = argument] { parse(text); }), failure);
    EXPECT_NE(FailureOf([&] { parse("--phones=many"); }), "");
}

// Any other would be a question mark in the C locale.
TEST(SimulatorCommandLine, HelpHasAsciiCharactersOnly) {
    const string help = ParseCommandLine({"morvane-simulator", "--help"}).help;
    EXPECT_EQ(help.find("Usage:\n  "), 0U) << help;
    EXPECT_NE(help.find(" [OPTION...]\n"), string::npos) << help;
    EXPECT_TRUE(g_str_is_ascii(help.c_str())) << help;
    EXPECT_EQ(ParseCommandLine({"morvane-simulator", "-h"}).help, help);
    EXPECT_EQ(ParseCommandLine({"morvane-simulator"}).help, "");
}

class SimulatorCommands : public SimulatorTest {
  protected:
    void SetUp() override {
        StartSelected(ByHand());
        commands_.emplace(daemon());
    }
    string Execute(const string& line) { return commands_->Execute(line); }
    string ComplaintAbout(const string& line) {
        return FailureOf([&] { Execute(line); });
    }

    std::optional<Commands> commands_;
};

TEST_F(SimulatorCommands, EmptyLinesAndRemarksDoNothing) {
    for (const char* const line : {"", "   ", "# crash"}) {
        EXPECT_EQ(Execute(line), "");
    }
    EXPECT_EQ(daemon().Sessions().size(), 1U);
}

TEST_F(SimulatorCommands, HelpOfEachCommandIsItsLineOfTheList) {
    EXPECT_EQ(
        Execute("help remove"),
        "remove DEVICE                                 Take a device, by path or address, out "
        "of reach\n");
    std::istringstream list(Execute("help"));
    std::size_t count = 0;
    for (string line; std::getline(list, line); ++count)
        EXPECT_EQ(Execute("help " + line.substr(0, line.find(' '))), line + "\n");
    EXPECT_GT(count, 30U);
}

TEST_F(SimulatorCommands, ComplainInOneLine) {
    const std::pair<string, string> complaints[] = {
        {"dance", "Unknown command: dance (try help)"},
        {"help dance", "Unknown command: dance (try help)"},
        {"refuse GetSize", "Usage: refuse METHOD ERROR MESSAGE"},
        {"leave now", "Usage: leave"},
        {"stall maybe", "Neither on nor off: maybe"},
        {"advance /a -1", "Not a number from 0 to 18446744073709551615: -1"},
        {"state " + string(kSession) + " 256", "Not a number from 0 to 255: 256"},
        {"add /a/dev_1 00 J\xf6rg", "The command is not in UTF-8"},
        {"remove /nowhere", "No such device: /nowhere"},
    };
    for (const auto& [line, complaint] : complaints) EXPECT_EQ(ComplaintAbout(line), complaint);
    EXPECT_EQ(ComplaintAbout("reply GetSize ((").find("Not a value: (( ("), 0U);
}

TEST_F(SimulatorCommands, TextKeepsItsBlanks) {
    Execute("refuse GetSize com.veltrisonix.Error.Failed The phone  is busy");
    EXPECT_EQ(Access("GetSize"), "com.veltrisonix.Error.Failed: The phone  is busy");
    Execute("clear-faults");
    EXPECT_EQ(Access("GetSize"), "(uint16 26,)");
}

TEST_F(SimulatorCommands, ReplyAndProperties) {
    Execute("reply GetSize ('a', uint32 1)");
    EXPECT_EQ(Access("GetSize"), "('a', uint32 1)");
    Execute("override * com.veltrisonix.obex.Session1 Root 'a b'");
    EXPECT_EQ(client().Get(kSession, "obex.Session1", "Root"), "(<'a b'>,)");
    Execute("hide * com.veltrisonix.obex.Session1 Root");
    EXPECT_NE(client().Get(kSession, "obex.Session1", "Root").find("No such"), string::npos);
    Execute("clear-property-faults");
    EXPECT_EQ(client().Get(kSession, "obex.Session1", "Root"), "(<'/'>,)");
}

TEST_F(SimulatorCommands, Notifications) {
    Execute("notify /a com.veltrisonix.Device1 Alias 'x y'");
    Execute("flood /a com.veltrisonix.Device1 RSSI 3 int16 5");
    Execute("invalidate /a com.veltrisonix.Device1 Alias");
    const string rssi = Changed("/a", "Device1", "'RSSI': <int16 5>");
    const Signals signals = client().TakeSignals();
    ASSERT_EQ(signals.size(), 5U);
    EXPECT_EQ(signals[0], Changed("/a", "Device1", "'Alias': <'x y'>"));
    EXPECT_EQ(signals[3], rssi);
    EXPECT_EQ(signals[4], "/a PropertiesChanged('com.veltrisonix.Device1', @a{sv} {}, ['Alias'])");
}

TEST_F(SimulatorCommands, PhonesAndDevices) {
    EXPECT_EQ(Execute("phones"), string(kPhonePath) + "  " + kPhone + "  Aster\n");
    Execute("remove " + string(kPhone));
    EXPECT_EQ(Execute("phones"), string(kPhonePath) + "  " + kPhone + "  Aster  (out of reach)\n");
    Execute("return " + string(kPhone));
    Execute("add /x/dev_1 00:00:00:00:00:01 My second phone");
    EXPECT_EQ(client().Get("/x/dev_1", "Device1", "Alias"), "(<'My second phone'>,)");
}

TEST_F(SimulatorCommands, SessionsAndTransfers) {
    EXPECT_EQ(Execute("sessions"), string(kSession) + "\n");
    Execute("content 0123456789");
    Access("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
    EXPECT_EQ(Execute("transfers"), string(kTransfer) + "\n");
    Execute("advance " + string(kTransfer) + " 3");
    EXPECT_EQ(ReadFile("phonebook.vcf"), "012");
    Execute("complete " + string(kTransfer));
    EXPECT_EQ(ReadFile("phonebook.vcf"), "0123456789");
    Execute("close " + string(kSession));
    EXPECT_EQ(Execute("sessions"), "");
}

TEST_F(SimulatorCommands, NewsOnThePhone) {
    Execute("add-contact " + string(kPhone) + " +12025550001 Ann Doe");
    EXPECT_EQ(Access("Search", "('name', 'ann doe', @a{sv} {})"), "([('1A.vcf', 'Doe;Ann')],)");
    Access("Select", "('int', 'mch')");
    Execute("miss-call " + string(kPhone) + " +12025550001");
    EXPECT_EQ(Access("List", "(@a{sv} {'MaxCount': <uint16 1>},)"), "([('1.vcf', 'Doe;Ann')],)");
}

TEST_F(SimulatorCommands, CallsAreListedAndQuitIsRemembered) {
    Execute("forget-calls");
    Access("GetSize");
    EXPECT_EQ(Execute("calls"),
              string(kSession) + " com.veltrisonix.obex.PhonebookAccess1.GetSize()\n");
    EXPECT_FALSE(commands_->IsQuitting());
    Execute("quit");
    EXPECT_TRUE(commands_->IsQuitting());
}

}  // namespace
}  // namespace simulator
