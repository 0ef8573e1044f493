#include "simulator/simulator_fixture.h"

#include <sys/stat.h>

namespace simulator {
namespace {

using std::string;

constexpr char kTransfer1[] = "obex.Transfer1";

class SimulatorTransfer : public SimulatorTest {
  protected:
    string PullAll(const string& filters = "{}", const string& file = "/tmp/phonebook.vcf") {
        return Access("PullAll", "('" + file + "', @a{sv} " + filters + ")");
    }
    string Ask(const string& method) {
        return client().Call(kTransfer, string("obex.Transfer1.") + method);
    }
    string Change(const string& changes) { return Changed(kTransfer, kTransfer1, changes); }
    string Status() { return client().Get(kTransfer, kTransfer1, "Status"); }
    /// Starts a transfer of ten bytes, which the test advances; discards earlier signals.
    void StartTenBytes() {
        StartSession(ByHand());
        daemon().SetPullContent("0123456789");
        PullAll();
        client().TakeSignals();
    }
};

TEST_F(SimulatorTransfer, AdvancesByHandAndAnnouncesProgress) {
    StartTenBytes();
    EXPECT_EQ(ReadFile("phonebook.vcf"), "");
    daemon().AdvanceTransfer(kTransfer, 4);
    EXPECT_EQ(client().TakeSignals(),
              (Signals{Change("'Status': <'active'>"), Change("'Transferred': <uint64 4>")}));
    EXPECT_EQ(ReadFile("phonebook.vcf"), "0123");
    daemon().AdvanceTransfer(kTransfer, 100);
    EXPECT_EQ(client().TakeSignals(),
              (Signals{Change("'Transferred': <uint64 10>"), Change("'Status': <'complete'>")}));
    EXPECT_EQ(ReadFile("phonebook.vcf"), "0123456789");
    EXPECT_THROW(daemon().AdvanceTransfer(kTransfer, 1), std::runtime_error);
    EXPECT_THROW(daemon().AdvanceTransfer("/nowhere", 1), std::runtime_error);
}

TEST_F(SimulatorTransfer, SuspendsAndResumes) {
    StartTenBytes();
    const string not_active = Error("NotInProgress", "Transfer is not active");
    const string not_suspended = Error("NotInProgress", "Transfer is not suspended");
    EXPECT_EQ(Ask("Suspend"), not_active);
    EXPECT_EQ(Ask("Resume"), not_suspended);
    daemon().StartTransfer(kTransfer);
    EXPECT_EQ(Ask("Suspend"), "()");
    EXPECT_EQ(Status(), "(<'suspended'>,)");
    EXPECT_THROW(daemon().AdvanceTransfer(kTransfer, 1), std::runtime_error);
    EXPECT_EQ(Ask("Suspend"), not_active);
    EXPECT_EQ(Ask("Resume"), "()");
    EXPECT_EQ(Status(), "(<'active'>,)");
}

TEST_F(SimulatorTransfer, IsCancelledOnce) {
    StartTenBytes();
    daemon().AdvanceTransfer(kTransfer, 4);
    client().TakeSignals();
    EXPECT_EQ(Ask("Cancel"), "()");
    EXPECT_EQ(client().TakeSignals(), Signals{Change("'Status': <'error'>")});
    EXPECT_EQ(ReadFile("phonebook.vcf"), "0123");
    EXPECT_EQ(Ask("Cancel"), Error("NotInProgress", "Transfer is over"));
    EXPECT_THROW(daemon().AbortTransfer(kTransfer), std::runtime_error);
}

TEST_F(SimulatorTransfer, FailsWhenAbortedOrItsPhoneIsRemoved) {
    StartTenBytes();
    daemon().AbortTransfer(kTransfer);
    EXPECT_EQ(client().TakeSignals(), Signals{Change("'Status': <'error'>")});
    PullAll();
    client().TakeSignals();
    daemon().RemoveDevice(kPhone);
    EXPECT_EQ(client().TakeSignals().front(),
              Changed(string(kSession) + "/transfer1", kTransfer1, "'Status': <'error'>"));
    EXPECT_TRUE(daemon().Transfers().empty());
}

TEST_F(SimulatorTransfer, MakesNoProgressWhileStalled) {
    StartSelected(Quick());
    daemon().StallTransfers(true);
    PullAll();
    EXPECT_EQ(Status(), "(<'queued'>,)");
    daemon().StallTransfers(false);
    client().AwaitSignal(Change("'Status': <'complete'>"));
}

TEST_F(SimulatorTransfer, AnnouncesProgressTwiceASecond) {
    Options options = Quick();
    options.rate = 1000;
    StartSession(options);
    daemon().SetPullContent(string(300, 'x'));
    PullAll();
    const string complete = Change("'Status': <'complete'>");
    Signals signals;
    while (signals.empty() || signals.back() != complete)
        for (const string& signal : client().TakeSignals()) signals.push_back(signal);
    EXPECT_EQ(
        Signals(signals.end() - 3, signals.end()),
        (Signals{Change("'Status': <'active'>"), Change("'Transferred': <uint64 300>"), complete}));
}

TEST_F(SimulatorTransfer, RefusesInvalidArguments) {
    StartSelected(ByHand());
    EXPECT_EQ(Access("Pull", "('FFFF.vcf', '/tmp/card.vcf', @a{sv} {})"),
              Error("DoesNotExist", "No such vCard: FFFF.vcf"));
    EXPECT_EQ(Access("Pull", "('x', '/tmp/card.vcf', @a{sv} {})"),
              InvalidArguments("Malformed vCard handle: x"));
    EXPECT_EQ(PullAll("{'Order': <'indexed'>}"),
              InvalidArguments("Filter not allowed here: Order"));
    EXPECT_EQ(PullAll("{}", "phonebook.vcf"),
              InvalidArguments("Not an absolute file name: phonebook.vcf"));
    EXPECT_TRUE(daemon().Transfers().empty());
}

TEST_F(SimulatorTransfer, RefusesFilesThatItCannotOpenAndFailsWhenTheDiskIsFull) {
    StartSelected(ByHand());
    ASSERT_EQ(mkfifo(directory_.File("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(directory_.File("folder").c_str(), 0700), 0);
    for (const char* name : {"fifo", "folder"}) {
        EXPECT_EQ(PullAll("{}", string("/tmp/") + name),
                  Error("Failed", "Cannot write ") + directory_.File(name));
    }
    ASSERT_EQ(symlink("/dev/full", directory_.File("phonebook.vcf").c_str()), 0);
    PullAll();
    const string transfer = daemon().Transfers().back();
    daemon().CompleteTransfer(transfer);
    EXPECT_EQ(client().Get(transfer, kTransfer1, "Status"), "(<'error'>,)");
    EXPECT_EQ(client().Get(transfer, kTransfer1, "Transferred"), "(<uint64 0>,)");
}

TEST_F(SimulatorTransfer, RestoresPathAndContentOfPulls) {
    StartSelected(ByHand());
    daemon().UseEmptyTransferPath(true);
    daemon().SetPullContent("");
    EXPECT_EQ(PullAll(), "(objectpath '/', @a{sv} {})");
    daemon().UseEmptyTransferPath(false);
    PullAll();
    daemon().CompleteTransfer(daemon().Transfers().back());
    EXPECT_EQ(Status(), "(<'complete'>,)");
    daemon().RestorePullContent();
    EXPECT_NE(PullAll().find("'Name': <'telecom/pb.vcf'>"), string::npos);
}

TEST_F(SimulatorTransfer, ListsOldestFirstAcrossSessions) {
    StartTenBytes();
    CreateSession();
    const string second = "/com/veltrisonix/obex/client/session1";
    client().Call(second, "obex.PhonebookAccess1.PullAll", "('/tmp/2.vcf', @a{sv} {})");
    PullAll();
    EXPECT_EQ(daemon().Transfers(),
              (Signals{kTransfer, second + "/transfer1", string(kSession) + "/transfer2"}));
}

}  // namespace
}  // namespace simulator
