// The option --phone-book of the program.

#include "simulator/simulator_fixture.h"
#include "support/console.h"
#include "support/programs.h"

#include <iterator>
#include <utility>

namespace simulator {
namespace {

using morvane_test::Console;
using std::string;

class PhoneBookOption : public SimulatorTest {
  protected:
    string Write(const string& name, const string& text) {
        std::ofstream(directory_.File(name), std::ios::binary) << text;
        return directory_.File(name);
    }
    Console& Run(const string& file, const string& option = "--rate=0") {
        morvane_test::ConsoleOptions options;
        std::istringstream launcher(morvane_test::Launcher());
        options.prefix.assign(std::istream_iterator<string>(launcher), {});
        options.program = morvane_test::SimulatorPath();
        options.arguments = {"--phone-book=" + file, "--directory=" + directory_.Path(), option};
        options.wiring = morvane_test::Wiring::kPipes;
        options.bus_address = bus_.Address();
        options.directory = directory_.Path();
        return program_.emplace(options);
    }

    std::optional<Console> program_;
};

TEST_F(PhoneBookOption, GivesTheFirstPhoneTheValidCardsOfTheFile) {
    const string file = Write("book.vcf",
                              "BEGIN:VCARD\nVERSION:3.0\nN:Doe;Ann\nFN:Ann Doe\nTEL;TYPE=cell:+1\n"
                              "END:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:x\nEND:VCARD\n"
                              "BEGIN:VCARD\nVERSION:2.1\nN:Roe\nX-BT-UID:0A\nEND:VCARD\n");
    Console& program = Run(file);
    program.ExpectError(file + ":8: The version is neither 2.1 nor 3.0\n");
    program.Expect("Serving com.veltrisonix\n");
    client_.emplace(bus_.Address());
    CreateSession();
    Access("Select", "('int', 'pb')");
    Access("PullAll", "('/tmp/phonebook.vcf', @a{sv} {'Offset': <uint16 1>})");
    client().AwaitSignal(Changed(kTransfer, "obex.Transfer1", "'Status': <'complete'>"));
    const string pulled = ReadFile("phonebook.vcf");
    const std::size_t uid = pulled.find("X-BT-UID:") + sizeof "X-BT-UID:" - 1;
    EXPECT_EQ(pulled.substr(0, uid) + pulled.substr(uid + 32),
              "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Doe;Ann\r\nFN:Ann Doe\r\nTEL;CELL:+1\r\n"
              "X-BT-UID:\r\nEND:VCARD\r\n"
              "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Roe\r\nX-BT-UID:0A\r\nFN:Roe\r\nEND:VCARD\r\n");
    CreateSession("02:00:5E:10:00:02");
    const string second = "/com/veltrisonix/obex/client/session1";
    client().Call(second, string(kAccess) + ".Select", "('int', 'pb')");
    EXPECT_EQ(client().Call(second, string(kAccess) + ".GetSize"), "(uint16 26,)");
    program.Type("quit");
    program.Await("The simulator ends");
    program.ExpectExit(0, Console::Rest::kIgnored);
}

TEST_F(PhoneBookOption, RefusesAFileWithoutAUsableCard) {
    const string empty = Write("empty.vcf", "");
    const string bad = Write("bad.vcf", "BEGIN:VCARD\nFN:x\nEND:VCARD\n");
    const string utf16 = Write("utf16.vcf", string("\xff\xfe"
                                                   "B\0E\0G\0",
                                                   8));
    const string unmarked = Write("unmarked.vcf", string("\0B\0E\0G", 6));
    const string convert = " is in UTF-16: convert it, as with iconv -f UTF-16 -t UTF-8\n";
    const string folder = directory_.Path();
    const string prefix = "morvane-simulator: --phone-book: ";
    const std::pair<string, string> rows[] = {
        {"/nonexistent", prefix + "cannot read /nonexistent: No such file or directory\n"},
        {folder, prefix + "cannot read " + folder + ": Is a directory\n"},
        {"/dev/zero", prefix + "more than 64 MiB in /dev/zero\n"},
        {utf16, prefix + utf16 + convert},
        {unmarked, prefix + unmarked + convert},
        {empty, prefix + "no usable card in " + empty + "\n"},
        {bad, bad + ":1: The card has no VERSION\n" + prefix + "no usable card in " + bad + "\n"},
    };
    for (const auto& [file, complaint] : rows) {
        Console& program = Run(file);
        program.ExpectError(complaint);
        program.ExpectExit(1);
        EXPECT_EQ(program.Errors(), complaint);
    }
}

TEST_F(PhoneBookOption, NeedsAPhone) {
    Console& program = Run("book.vcf", "--phones=0");
    program.ExpectError("morvane-simulator: --phone-book: there is no phone\n");
    program.ExpectExit(1);
}

}  // namespace
}  // namespace simulator
