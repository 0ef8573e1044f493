#include "support/conversation.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kTransferInterface;

/// A pull's transfer as the tool and the daemon see it on the bus.
class TransferTest : public ConversationTest {
  protected:
    /// From the phone book menu to the transfer menu, which prints these lines first.
    void ExpectPullToPrint(const std::string& messages, Here here = Here::Now()) {
        Type("a", here);
        Await(Prompt(kFilterMenu), here);
        Type("d", here);
        Expect(messages + Prompt(kTransferMenu), here);
    }

    /// As above; the daemon chooses the order.
    void ExpectPullToPrintThePhonesWords(Here here = Here::Now()) {
        daemon().SetPullContent("vcard");
        Type("a", here);
        Await(Prompt(kFilterMenu), here);
        Type("d", here);
        AwaitAll({Normal("Status: queued\n"), Normal("Object Name: pb.vcf\n"),
                  Normal("Filename: " + PulledPhonebook() + "\n"), Normal("Size: 5\n"),
                  Normal("Bytes Transferred: 0\n"), Normal("Session: " + Session() + "\n"),
                  Normal("MIME type: text/x-vcard\n")},
                 here);
        Expect(Prompt(kTransferMenu), here);
    }

    void ExpectAnswer(const std::string& line, const std::string& messages,
                      Here here = Here::Now()) {
        Type(line, here);
        Expect(messages + Prompt(kTransferMenu), here);
    }

    void ExpectTransferCall(const std::string& method, Here here = Here::Now()) {
        ExpectCall(kTransferInterface + ("." + method), "()", here);
        const simulator::Call call = daemon().Calls().back();
        EXPECT_EQ(call.path, Transfer());
        EXPECT_EQ(call.method, method);
    }
};

TEST_F(TransferTest, BeginsWithThePropertiesFromTheReply) {
    OpenSelectedSession();
    ExpectPullToPrintThePhonesWords();
    ExpectAnswer("s", Normal("Transfer Status: queued\n"));
}

TEST_F(TransferTest, PrintsTheReplysEntriesInTheirOrder) {
    OpenSelectedSession();
    daemon().Reply("PullAll",
                   Value("(objectpath '/t/1', {'Type': <'t'>, 'Time': <uint64 1>, 'Transferred': "
                         "<uint64 4294967297>, 'Size': <uint64 4294967295>, 'Session': <'s'>, "
                         "'Filename': <'f'>, 'Name': <''>, 'Status': <'100%s'>})"));
    ExpectPullToPrint(Lines({"MIME type: t", "Bytes Transferred: 1", "Size: 4294967295",
                             "Session: s", "Filename: f", "Object Name: ", "Status: 100%s"}));
    // The daemon's object knows none of this.
    ExpectAnswer("s", Normal("Transfer Status: \n"));
    Type("x");
    Expect(Red("Filename property not set!") + Prompt(kPhonebookMenu));

    daemon().Reply("PullAll", Value("(objectpath '/t/2', @a{sv} {})"));
    ExpectPullToPrint("");
    daemon().Notify("/t/2", kTransferInterface, "Transferred", Value("uint64 1000"));
    daemon().Notify("/t/2", kTransferInterface, "Size", Value("uint64 1000"));
    Expect(Notice(kTransferMenu, "Size Attribute Received: 1000\n"));
    daemon().Notify("/t/2", kTransferInterface, "Transferred", Value("uint64 1000"));
    Expect(Notice(kTransferMenu, "Transferred Percent: 100%\n"));
}

TEST_F(TransferTest, DoesNotMisreadEntriesOfAWrongType) {
    OpenSelectedSession();
    daemon().Reply("PullAll",
                   Value("(objectpath '/t/1', {'Status': <uint32 1>, 'Name': <['n']>, 'Filename': "
                         "<true>, 'Size': <'1000'>, 'Transferred': <1.5>, 'Session': <byte 1>, "
                         "'Type': <('t',)>})"));
    ExpectPullToPrint(
        Lines({"Status: Unknown", "Object Name: Unknown", "Filename: Unknown", "Size: 0",
               "Bytes Transferred: 0", "Session: Unknown", "MIME type: Unknown"}));
    daemon().Notify("/t/1", kTransferInterface, "Transferred", Value("uint64 1000"));
    ExpectQuiet(kTransferMenu);
}

TEST_F(TransferTest, IsAbsentWhereTheDaemonsPropertiesHaveAWrongType) {
    OpenSelectedSession();
    for (const char* const name : {"Status", "Filename"})
        daemon().OverrideProperty(simulator::kAnyPath, kTransferInterface, name, Value("uint32 5"));
    console().AllowStderr(
        "GLib-GIO-WARNING.*Received property (Status|Filename) with type u does "
        "not match expected type s in the expected interface");
    PullAll("");
    ExpectAnswer("s", Normal("Transfer Status: \n"));
    ExpectAnswer("d", Red("Filename property not set!"));
    Type("x");
    Expect(Red("Filename property not set!") + Prompt(kPhonebookMenu));
}

TEST_F(TransferTest, CallsTheTransfersObject) {
    OpenSelectedSession();
    PullAll("first");
    Type("x");
    Await(Prompt(kPhonebookMenu));
    PullAll("second");
    for (const char* const method : {"Suspend", "Resume", "Cancel"})
        daemon().Reply(method, Value("()"));
    ExpectAnswer("p", "");
    ExpectTransferCall("Suspend");
    ExpectAnswer("r", "");
    ExpectTransferCall("Resume");
    ExpectAnswer("c", Normal("Removing: " + PulledPhonebook() + "\n"));
    ExpectTransferCall("Cancel");
    EXPECT_EQ(daemon().Transfers().size(), 2U);
}

TEST_F(TransferTest, ShowsTheBusErrorsAsTheyAre) {
    OpenSelectedSession();
    PullAll("");
    daemon().Reply("Resume", Value("('unasked',)"));
    ExpectAnswer("r", Red("Remote Call failed Method \xe2\x80\x9cResume\xe2\x80\x9d returned type "
                          "\xe2\x80\x9c(s)\xe2\x80\x9d, but expected "
                          "\xe2\x80\x9c()\xe2\x80\x9d\n"));
    daemon().Hang("Suspend");
    Type("p");
    ExpectCall("Suspend", "()");
    daemon().Crash();
    Expect(
        Red("Remote Call failed GDBus.Error:org.freedesktop.DBus.Error.NoReply: Message "
            "recipient disconnected from message bus without replying\n"));
    AwaitAll({"Removing: " + PulledPhonebook() + "\n", "Removed /com/veltrisonix/obex\n",
              std::string("Removed ") + kPhonePath + "\n"});
}

class TransferOfAnInstanceTest : public TransferTest {
  protected:
    void SetUp() override {
        StartInstance("bench");
        OpenSelectedSession();
    }
};

TEST_F(TransferOfAnInstanceTest, IsSoughtUnderTheDefaultNameAndNotFound) {
    ExpectPullToPrintThePhonesWords();
    ExpectAnswer("s", Normal("Transfer Status: \n"));
    ExpectAnswer("d", Red("Filename property not set!"));
    const std::string failed =
        Red("Remote Call failed GDBus.Error:org.freedesktop.DBus.Error.ServiceUnknown: The name "
            "com.veltrisonix was not provided by any .service files\n");
    ExpectAnswer("p", failed);
    ExpectAnswer("r", failed);
    daemon().CompleteTransfer(Transfer());
    ExpectQuiet(kTransferMenu);
    ExpectAnswer("c", failed + Red("Filename property not set!"));
    EXPECT_EQ(CountCalls("Suspend") + CountCalls("Resume") + CountCalls("Cancel"), 0U);
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
}

TEST_F(TransferOfAnInstanceTest, IsSoughtAtTheDaemonWithTheDefaultName) {
    simulator::Daemon other(bus().Address(), simulator::Options::Scripted());
    other.Reply("GetAll", Value("({'Status': <'of the other'>},)"), 1);
    other.Reply("Suspend", Value("()"));
    PullAll("vcard");
    ExpectAnswer("s", Normal("Transfer Status: of the other\n"));
    ExpectAnswer("p", "");
    const auto call = other.AwaitCall("Suspend", Patience());
    ASSERT_TRUE(call);
    EXPECT_EQ(call->path, Transfer());
    EXPECT_EQ(CountCalls("Suspend"), 0U);
    other.Notify(Transfer(), kTransferInterface, "Transferred", Value("uint64 5"));
    Expect(Notice(kTransferMenu, "Transferred Percent: 100%\n"));
}

}  // namespace
}  // namespace morvane_test
