#include "simulator/program/commands.h"
#include "simulator/program/command_line.h"
#include "simulator/program/command_table.h"
#include "simulator/simulator_fixture.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <tuple>
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

TEST(SimulatorCommandLine, RefusesUnknownOptionsAndInvalidValues) {
    const std::pair<const char*, const char*> rows[] = {
        {"--colour", "Unknown option --colour"},
        {"stray", "Unexpected argument stray"},
        {"--exec=morvane", "--exec takes no value"},
        {"--by-hand=off", "--by-hand takes no value"},
        {"--phones=100", "--phones takes a number from 0 to 99"},
        {"--phones=-1", "--phones takes a number from 0 to 99"},
        {"--user-id=J\xf6rg", "An argument is not in UTF-8"},
        {"--directory=/nonexistent", "--directory: no such directory: /nonexistent"}};
    const auto failure_of = [](const char* argument) {
        return FailureOf([argument] { ParseCommandLine({"morvane-simulator", argument}); });
    };
    for (const auto& [argument, failure] : rows) EXPECT_EQ(failure_of(argument), failure);
    EXPECT_NE(failure_of("--phones=many"), "");
}

// In the C locale other characters would be printed as question marks.
TEST(SimulatorCommandLine, HelpHasAsciiCharactersOnly) {
    const string help = ParseCommandLine({"morvane-simulator", "--help"}).help;
    EXPECT_EQ(help.find("Usage:\n  "), 0U) << help;
    EXPECT_NE(help.find(" [OPTION...] [--exec COMMAND [ARG...]]\n"), string::npos) << help;
    EXPECT_TRUE(g_str_is_ascii(help.c_str())) << help;
    EXPECT_EQ(ParseCommandLine({"morvane-simulator", "-h"}).help, help);
    EXPECT_EQ(ParseCommandLine({"morvane-simulator"}).help, "");
}

class SimulatorCommands : public SimulatorTest {
  protected:
    using Kind = CommandErrorKind;

    /// Three phones; the first has a session with a transfer.
    void SetUp() override {
        Options options = ByHand();
        options.phones = 3;
        StartSelected(options);
        Execute("content 0123456789");
        Access("PullAll", "('/tmp/phonebook.vcf', @a{sv} {})");
        client().TakeSignals();
    }
    /// Starts another daemon, and new commands for it.
    void StartSelected(const Options& options) {
        commands_.reset();
        StartSession(options);
        Access("Select", "('int', 'pb')");
        commands_.emplace(daemon(), [this](const string& line) {
            const std::lock_guard lock(mutex_);
            log_ += line;
        });
    }
    void TearDown() override { commands_.reset(); }

    string Execute(const string& line) { return commands_->Execute(line); }
    string TakeLog() {
        const std::lock_guard lock(mutex_);
        return std::exchange(log_, {});
    }
    void ExpectComplaint(const string& line, Kind kind, const string& complaint) {
        try {
            Execute(line);
            ADD_FAILURE() << line << " was carried out";
        } catch (const CommandError& error) {
            EXPECT_EQ(error.what(), complaint) << line;
            EXPECT_EQ(error.kind(), kind) << line;
        }
    }
    std::optional<Commands> commands_;

  private:
    std::mutex mutex_;
    string log_;
};

TEST_F(SimulatorCommands, EmptyLinesAndCommentsDoNothing) {
    for (const char* const line : {"", "   ", "# crash"}) EXPECT_EQ(Execute(line), "");
    EXPECT_EQ(daemon().Sessions().size(), 1U);
}

TEST_F(SimulatorCommands, HelpDescribesOneCommand) {
    EXPECT_EQ(Execute("help refuse"),
              "Usage: refuse METHOD ERROR MESSAGE\nAnswer a method with an error.\n"
              "Shown when it is next called.\nTo use names that are unknown: refuse!\n"
              "Example: refuse Select Failed Not today\n");
    EXPECT_EQ(Execute("help phones"), "Usage: phones\nList the phones.\nExample: phones\n");
    EXPECT_EQ(Execute("help").find("help [COMMAND]                                List the "
                                   "commands, or describe one\n"),
              0U);
}

class EachCommand : public SimulatorCommands, public testing::WithParamInterface<string> {};

TEST_P(EachCommand, HasAnExampleThatWorks) {
    std::ofstream(directory_.File("strange.vcf")) << "strange";
    std::filesystem::current_path(directory_.Path());
    const string help = Execute("help " + GetParam());
    const string example = help.substr(help.find("Example: ") + 9);
    EXPECT_EQ(example.find(GetParam()), 0U) << example;
    EXPECT_NE(Execute(example.substr(0, example.size() - 1)), "") << example;
}

INSTANTIATE_TEST_SUITE_P(Simulator, EachCommand, testing::ValuesIn(CommandNames()),
                         [](const auto& test) {
                             string name = test.param;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return !std::isalnum(c); },
                                 '_');
                             return name;
                         });

TEST_F(SimulatorCommands, ReportErrorsInOneLine) {
    const std::tuple<const char*, Kind, const char*> complaints[] = {
        {"dance", Kind::kUnknownCommand, "Unknown command: dance (try help)"},
        {"help dance", Kind::kUnknownCommand, "Unknown command: dance (try help)"},
        {"refus", Kind::kUnknownCommand, "Unknown command: refus; did you mean refuse?"},
        {"leave!", Kind::kUnknownCommand, "Unknown command: leave!; did you mean leave?"},
        {"refuse GetSize", Kind::kBadArguments, "Usage: refuse METHOD ERROR MESSAGE"},
        {"leave now", Kind::kBadArguments, "Usage: leave"},
        {"remove \"Aster\" now", Kind::kBadArguments, "Usage: remove PHONE"},
        {"remove \"Aster", Kind::kBadArguments, "A quotation mark is missing at the end"},
        {"stall maybe", Kind::kBadArguments, "Neither on nor off: maybe"},
        {"advance transfer -1", Kind::kBadArguments,
         "Not a number from 0 to 18446744073709551615: -1"},
        {"state session 256", Kind::kBadArguments, "Not a number from 0 to 255: 256"},
        {"add /a/dev_1 00 J\xf6rg", Kind::kBadArguments, "The command is not in UTF-8"},
        {"add a 00 A", Kind::kBadArguments, "Not an object path: a"},
        {"reply GetSize 5", Kind::kBadArguments,
         "Not a tuple: 5 (write ('text', uint32 1), or (5,) for one value)"},
        {"refuse Select Not-a-name x", Kind::kBadArguments, "Not an error name: Not-a-name"},
        {"remove /nowhere", Kind::kNoSuchObject, "No phone /nowhere (try phones)"},
        {"remove \"\"", Kind::kNoSuchObject, "No phone  (try phones)"},
        {"remove 02:00", Kind::kNoSuchObject,
         "02:00 matches several devices: Aster (02:00:5E:10:00:01), Birch (02:00:5E:10:00:02), "
         "Zoë's Clover (02:00:5E:10:00:03)"},
        {"close session7", Kind::kNoSuchObject, "No session session7 (try sessions)"},
        {"abort /nowhere", Kind::kNoSuchObject, "No transfer /nowhere (try transfers)"},
        {"notify nowhere Device1 Alias 'x'", Kind::kNoSuchObject,
         "No object nowhere (try sessions, transfers or phones)"},
        {"notify * Device1 Alias 'x'", Kind::kNoSuchObject,
         "No object * (try sessions, transfers or phones)"},
        {"add /com/veltrisonix/hci0/dev_02_00_5E_10_00_01 00 A", Kind::kOtherFailure,
         "The path is in use: /com/veltrisonix/hci0/dev_02_00_5E_10_00_01"},
        {"content-file /", Kind::kOtherFailure, "Cannot read /: not a regular file"},
        {"content-file /nowhere", Kind::kOtherFailure,
         "Cannot read /nowhere: No such file or directory"},
        {"add / 00 Root", Kind::kBadArguments, "Not a path for a device: /"},
        {"flood Aster Device1 Alias 1000001 'x'", Kind::kBadArguments,
         "Not a number from 0 to 1000000: 1000001"},
    };
    for (const auto& [line, kind, complaint] : complaints) ExpectComplaint(line, kind, complaint);
    EXPECT_EQ(FailureOf([&] { Execute("reply GetSize (("); }).find("Not a value: (( ("), 0U);
    Execute("close session");
    ExpectComplaint("close session", Kind::kNoSuchObject, "There is no session");
}

TEST_F(SimulatorCommands, RefuseUnknownNamesAndInterfacesThatAnObjectLacks) {
    const std::pair<const char*, const char*> refusals[] = {
        {"hang Selct", "No method Selct; did you mean Select?"},
        {"hang GETSIZE", "No method GETSIZE; did you mean GetSize?"},
        {"hang Xyz", "No method Xyz"},
        {"hang PhonebookAccess1.Suspnd", "No method Suspnd of PhonebookAccess1"},
        {"hang Transfer1.Suspnd", "No method Suspnd of Transfer1; did you mean Suspend?"},
        {"hang com.veltrisonix.Device.Pair",
         "No interface com.veltrisonix.Device; did you mean com.veltrisonix.Device1?"},
        {"hide * Devise1 Alias", "No interface Devise1; did you mean Device1?"},
        {"hide * Device1 Alais", "No property Alais of Device1; did you mean Alias?"},
        {"hide session PhonebookAccess1 Foldr",
         "No property Foldr of PhonebookAccess1; did you mean Folder?"},
        {"hide session Peer Folder", "No property Folder of Peer"},
        {"override session Device1 Alias 'x'", "session0 has no interface Device1"},
        {"hide transfer PhonebookAccess1 Folder", "transfer0 has no interface PhonebookAccess1"},
        {"notify Aster Session1 Root '/'", "Aster has no interface Session1"},
        {"invalidate session Transfer1 Status", "session0 has no interface Transfer1"},
        {"flood Birch Transfer1 Status 2 'x'", "Birch has no interface Transfer1"},
    };
    for (const auto& [line, refusal] : refusals)
        ExpectComplaint(line, Kind::kBadArguments, refusal);
    for (const char* const known :
         {"hang GetAll", "hang Properties.Get", "hang org.freedesktop.DBus.Peer.Ping",
          "hang ObjectManager.GetManagedObjects", "hang Client1.CreateSession",
          "override! session Device1 Alias 'x'", "hide /not/yet Device1 Alias",
          "hide * Device1 Alias", "hide session PhonebookAccess1 Folder"})
        EXPECT_NE(Execute(known), "");
}

TEST_F(SimulatorCommands, ObjectsHaveShortNames) {
    CreateSession("02:00:5E:10:00:02");
    const string second = "/com/veltrisonix/obex/client/session1";
    const std::pair<const char*, string> objects[] = {
        {"session", second},
        {"session0", kSession},
        {kSession, kSession},
        {"transfer", kTransfer},
        {"transfer0", kTransfer},
        {"/a", "/a"},
        {"02:00:5e:10:00:01", kPhonePath},
        {"ASTER", kPhonePath},
        {"\"zoË's clover\"", "/com/veltrisonix/hci0/dev_02_00_5E_10_00_03"},
        {"Z", "/com/veltrisonix/hci0/dev_02_00_5E_10_00_03"},
        {"02:00:5E:10:00:02", "/com/veltrisonix/hci0/dev_02_00_5E_10_00_02"},
    };
    for (const auto& [word, path] : objects) {
        client().TakeSignals();
        Execute(string("notify! ") + word + " Device1 Alias 'x'");
        EXPECT_EQ(client().TakeSignals(), Signals{Changed(path, "Device1", "'Alias': <'x'>")})
            << word;
    }
}

// One alias may be the beginning of another.
TEST_F(SimulatorCommands, ExactNameOfAPhoneIsPreferredToABeginning) {
    Execute("add /a/dev_1 00:00:5E:00:53:01 Aster 2");
    EXPECT_EQ(Execute("remove Aster"),
              "Aster is out of reach: shown at once; an open session ends at the next answer\n");
    EXPECT_EQ(Execute("remove Zoë's Clover "),
              "Zoë's Clover is out of reach: shown at once; an open session ends at the next "
              "answer\n");
    Execute("remove 00:00:5E:00:53:01");
    Execute("add /a/dev_2 00:00:5E:00:53:02 02:00:5E:10:00:02, a copy");
    EXPECT_EQ(Execute("remove 02:00:5e:10:00:02").find("Birch is out of reach"), 0U);
    ExpectComplaint("remove Aster 2", Kind::kNoSuchObject, "No phone Aster 2 (try phones)");
}

TEST_F(SimulatorCommands, ReportTheChangeAndWhenItIsDisplayed) {
    const std::pair<const char*, const char*> answers[] = {
        {"refuse Select Failed Not today",
         "Select is refused with com.veltrisonix.Error.Failed: shown when it is next called\n"},
        {"stall on", "Stalling of transfers is on\n"},
        {"stall on", "Stalling of transfers is on already\n"},
        {"advance transfer 3", "transfer0 has moved on by at most 3 bytes\n"},
        {"start transfer", "transfer0 is active already\n"},
        {"override * Device1 Alias uint32 7",
         "Alias of all objects reads as uint32 7: shown when the object is next found: a phone "
         "after remove and return; with *, also a session with the next one, and a transfer with "
         "the next pull; in a session or transfer that exists, when the property next changes\n"},
        {"notify session Session1 Root '/x'", "Root of session0 is announced as '/x'\n"},
        {"state session 3", "The connection state of session0 is 3: shown at the next answer\n"},
        {"quit", "The simulator ends: shown at once; an open session ends at the next answer\n"},
    };
    for (const auto& [line, answer] : answers) EXPECT_EQ(Execute(line), answer) << line;
}

TEST_F(SimulatorCommands, ReportIfNothingChanges) {
    const auto changes = [this](const char* command) {
        const string answer = Execute(command);
        const bool says_so = answer.find(" already\n") != string::npos ||
                             answer.find("Nothing ") == 0 || answer.find("There ") == 0 ||
                             answer.find("No ") == 0;
        return !says_so;
    };
    for (const char* const command :
         {"return Aster", "state session 5", "add-client", "come-back", "stall off",
          "empty-transfer-path off", "release", "clear-faults", "clear-property-faults", "log off"})
        EXPECT_FALSE(changes(command)) << command;
    for (const char* const command :
         {"remove-client", "leave", "crash", "start transfer", "restore-content", "hang GetSize",
          "forget-calls", "log on"}) {
        SetUp();
        EXPECT_TRUE(changes(command)) << command;
        const bool hangs = command == string("hang GetSize");
        EXPECT_EQ(changes(hangs ? "release" : command), hangs) << command;
    }
}

TEST_F(SimulatorCommands, SendNotifications) {
    Execute("notify /a com.veltrisonix.Device1 Alias 'x y'");
    Execute("flood /a com.veltrisonix.Device1 RSSI 2 int16 5");
    Execute("notify! /a com.veltrisonix.Other Colour 'red'");
    Execute("invalidate /a com.veltrisonix.Device1 Alias");
    const string rssi = Changed("/a", "Device1", "'RSSI': <int16 5>");
    EXPECT_EQ(client().TakeSignals(),
              (Signals{Changed("/a", "Device1", "'Alias': <'x y'>"), rssi, rssi,
                       Changed("/a", "Other", "'Colour': <'red'>"),
                       "/a PropertiesChanged('com.veltrisonix.Device1', @a{sv} {}, ['Alias'])"}));
}

TEST_F(SimulatorCommands, RemoveReturnAndAddPhones) {
    StartSelected(ByHand());
    Execute("remove " + string(kPhone));
    Execute("add /x/dev_1 00:00:00:00:00:01 My second phone");
    EXPECT_EQ(Execute("phones"), string(kPhonePath) + "  " + kPhone +
                                     "  Aster  (out of reach)\n"
                                     "/x/dev_1  00:00:00:00:00:01  My second phone\n");
    EXPECT_EQ(Execute("return " + string(kPhone)), "Aster is back in reach\n");
    EXPECT_EQ(client().Get("/x/dev_1", "Device1", "Alias"), "(<'My second phone'>,)");
}

TEST_F(SimulatorCommands, AdvanceTransfersAndCloseSessions) {
    const string session = string(kSession) + "  ";
    EXPECT_EQ(Execute("sessions"), session + "connected  Aster  " + kPhone + "\n");
    Execute("advance transfer 3");
    const string file = "  " + directory_.File("phonebook.vcf") + "\n";
    EXPECT_EQ(Execute("transfers"), kTransfer + ("  active  3 of 10 bytes (30%)" + file));
    EXPECT_EQ(ReadFile("phonebook.vcf"), "012");
    Execute("complete transfer");
    EXPECT_EQ(ReadFile("phonebook.vcf"), "0123456789");
    Execute("state session 3");
    EXPECT_EQ(Execute("sessions"), session + "state 3  Aster  " + kPhone + "\n");
    Execute("close session");
    EXPECT_EQ(Execute("sessions"), "There are no sessions\n");
    EXPECT_EQ(Execute("transfers"), "There are no transfers\n");
}

TEST_F(SimulatorCommands, EmptyTransferHasNoPercentage) {
    std::ofstream(directory_.File("empty.vcf"));
    Execute("content-file " + directory_.File("empty.vcf"));
    Access("PullAll", "('/tmp/2.vcf', @a{sv} {})");
    EXPECT_NE(Execute("transfers").find("queued  0 of 0 bytes  /"), string::npos);
}

TEST_F(SimulatorCommands, ContentFileIsReadAtOnce) {
    const string file = directory_.File("strange file.vcf");
    std::ofstream(file) << string("a\0b\xff", 4);
    Execute("content-file " + file);
    std::filesystem::remove(file);
    Access("PullAll", "('/tmp/2.vcf', @a{sv} {})");
    Execute("complete transfer");
    EXPECT_EQ(ReadFile("2.vcf"), string("a\0b\xff", 4));
}

TEST_F(SimulatorCommands, AddContactsAndMissedCalls) {
    Execute("add-contact Aster +12025550001 Ann Doe");
    EXPECT_EQ(Access("Search", "('name', 'ann doe', @a{sv} {})"), "([('1A.vcf', 'Doe;Ann')],)");
    Access("Select", "('int', 'mch')");
    EXPECT_EQ(Execute("miss-call aster +12025550001"),
              "Aster has missed a call from +12025550001: shown after the next list, search, size "
              "or pull of all, with mch or cch selected\n");
    EXPECT_EQ(Access("List", "(@a{sv} {'MaxCount': <uint16 1>},)"), "([('1.vcf', 'Doe;Ann')],)");
}

TEST_F(SimulatorCommands, CallsAreListedAndQuitIsRemembered) {
    Execute("forget-calls");
    EXPECT_EQ(Execute("calls"), "No calls have arrived\n");
    Access("GetSize");
    EXPECT_EQ(Execute("calls"),
              string(kSession) + " com.veltrisonix.obex.PhonebookAccess1.GetSize()\n");
    EXPECT_FALSE(commands_->IsQuitting());
    Execute("quit");
    EXPECT_TRUE(commands_->IsQuitting());
}

TEST_F(SimulatorCommands, FaultsTakeEffectAndAreLogged) {
    Access("GetSize");
    EXPECT_EQ(Execute("log on"),
              "The log of calls is on: printed where the simulator was started\n");
    const string get = "org.freedesktop.DBus.Properties.Get('com.veltrisonix.obex.Session1', ";
    const string get_all =
        "org.freedesktop.DBus.Properties.GetAll('com.veltrisonix.obex.Session1',";
    const string get_size = "obex.PhonebookAccess1.GetSize(";
    const std::tuple<const char*, string, const char*> rows[] = {
        {"", get_size, "session0 PhonebookAccess1.GetSize() -> (uint16 26,)\n"},
        {"refuse GetSize Failed \"busy\"  now", get_size,
         "() -> com.veltrisonix.Error.Failed ('\"busy\"  now',)  (refuse)\n"},
        {"reply GetSize ('a', uint32 1)", get_size, "() -> ('a', uint32 1)  (reply)\n"},
        {"refuse! Selct com.example.No Busy", "obex.PhonebookAccess1.Selct(",
         "() -> com.example.No ('Busy',)  (refuse)\n"},
        {"clear-faults", get_size, "() -> (uint16 26,)\n"},
        {"", get_all, "...\n"},
        {"override * com.veltrisonix.obex.Session1 Root \"a b\"", get + "'Root'",
         "'Root') -> (<'a b'>,)  (override)\n"},
        {"override! session Session1 Colour 'red'", get + "'Colour'",
         "'Colour') -> (<'red'>,)  (override)\n"},
        {"hide * Session1 Root", get + "'Root'",
         "InvalidArgs ('No such property “Root”',)  (hide)\n"},
        {"", get_all, "...  (override or hide)\n"},
        {"clear-property-faults", get + "'Root'", "'Root') -> (<'/'>,)\n"},
        {"", "org.freedesktop.DBus.Peer.Ping(", "session0 Peer.Ping() -> ()\n"},
    };
    for (const auto& [command, call, end] : rows) {
        Execute(command);
        const std::size_t arguments = call.find('(');
        client().Call(kSession, call.substr(0, arguments), call.substr(arguments) + ")");
        const string log = TakeLog();
        EXPECT_EQ(log.substr(log.size() - std::min(log.size(), std::strlen(end))), end) << log;
    }
    Execute("log off");
    Access("GetSize");
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(SimulatorCommands, LogTruncatesLongValuesBetweenCharacters) {
    Execute("log on");
    const auto repeated = [](int count) {
        string text;
        for (int i = 0; i < count; ++i) text += "ë";
        return text;
    };
    const std::pair<const char*, int> beginnings[] = {{"", 79}, {"x", 78}};  // 160 and 159 bytes
    for (const auto& [beginning, count] : beginnings) {
        client().Call(kClientPath, "obex.Client1.SetUserId",
                      "('" + (beginning + repeated(100)) + "',)");
        EXPECT_EQ(TakeLog(),
                  "obex Client1.SetUserId('" + (beginning + repeated(count)) + "... -> ()\n");
    }
}

TEST(SimulatorCommandsWithoutSink, CannotLog) {
    const morvane_test::PrivateBus bus;
    Daemon daemon(bus.Address(), Options::Scripted());
    EXPECT_EQ(FailureOf([&] { Commands(daemon).Execute("log on"); }),
              "There is nowhere to show calls");
}

}  // namespace
}  // namespace simulator
