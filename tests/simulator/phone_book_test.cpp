// The option --phone-book of the program.

#include "simulator/objects/names.h"
#include "simulator/program_fixture.h"
#include "simulator/test_client.h"

#include <fstream>
#include <utility>

namespace simulator {
namespace {

using std::string;

class PhoneBookOption : public ProgramTest {
  protected:
    string Write(const string& name, const string& text) {
        std::ofstream(directory_.File(name), std::ios::binary) << text;
        return directory_.File(name);
    }
    string Read(const string& name) {
        std::ifstream file(directory_.File(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(PhoneBookOption, GivesTheFirstPhoneTheValidCardsOfTheFile) {
    const string file = Write("book.vcf",
                              "BEGIN:VCARD\nVERSION:3.0\nN:Doe;Ann\nFN:Ann Doe\nTEL;TYPE=cell:+1\n"
                              "END:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:x\nEND:VCARD\n"
                              "BEGIN:VCARD\nVERSION:2.1\nN:Roe\nX-BT-UID:0A\nEND:VCARD\n");
    const morvane_test::PrivateBus bus;
    Console& program = Serve(bus.Address(), {"--phone-book=" + file, "--rate=0"});
    program.ExpectError(file + ":8: The version is neither 2.1 nor 3.0\n");
    TestClient client(bus.Address());
    for (const char* const number : {"2", "1"})
        client.Call(kClientPath, "obex.Client1.CreateSession",
                    string("('02:00:5E:10:00:0") + number +
                        "', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    const string sessions = "/com/veltrisonix/obex/client/session";
    const string interface = "obex.PhonebookAccess1.";
    for (const auto& [session, size] :
         {std::pair("0", "(uint16 26,)"), std::pair("1", "(uint16 3,)")}) {
        client.Call(sessions + session, interface + "Select", "('int', 'pb')");
        EXPECT_EQ(client.Call(sessions + session, interface + "GetSize"), size);
    }
    client.Call(sessions + "1", interface + "PullAll",
                "('" + directory_.File("pulled.vcf") + "', @a{sv} {'Offset': <uint16 1>})");
    client.AwaitSignal(sessions +
                       "1/transfer0 PropertiesChanged('com.veltrisonix.obex.Transfer1', "
                       "{'Status': <'complete'>}, @as [])");
    const string pulled = Read("pulled.vcf");
    const std::size_t uid = pulled.find("X-BT-UID:") + sizeof "X-BT-UID:" - 1;
    EXPECT_EQ(pulled.substr(0, uid) + pulled.substr(uid + 32),
              "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Doe;Ann\r\nFN:Ann Doe\r\nTEL;CELL:+1\r\n"
              "X-BT-UID:\r\nEND:VCARD\r\n"
              "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Roe\r\nX-BT-UID:0A\r\nFN:Roe\r\nEND:VCARD\r\n");
    Quit(program);
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
    for (const auto& [file, complaint] : rows) ExpectFailure({"--phone-book=" + file}, complaint);
    ExpectFailure({"--phone-book=" + bad, "--phones=0"}, prefix + "there is no phone\n");
}

}  // namespace
}  // namespace simulator
