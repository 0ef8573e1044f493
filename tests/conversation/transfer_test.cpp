#include "support/conversation.h"

#include <filesystem>
#include <string>

namespace morvane_test {
namespace {

using simulator::kTransferInterface;

/// The D-Bus object of a transfer.
class TransferTest : public ConversationTest {
  protected:
    /// Pulls and expects the transfer's properties in any order.
    void ExpectPullToPrintProperties(Here here = Here::Now()) {
        daemon().SetPullContent("vcard");
        EnterAndAwait("a", Prompt(kFilterMenu), here);
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
        Enter(line, messages + Prompt(kTransferMenu), here);
    }
};

TEST_F(TransferTest, StoresOnlySizeFromReply) {
    OpenSelectedSession();
    daemon().Reply("PullAll",
                   Value("(objectpath '/t/1', {'Type': <'t'>, 'Size': <uint64 1000>, 'Filename': "
                         "<'f'>, 'Status': <'100%s'>})"));
    EnterAndAwait("a", Prompt(kFilterMenu));
    Enter("d", Lines({"MIME type: t", "Size: 1000", "Filename: f", "Status: 100%s"}) +
                   Prompt(kTransferMenu));
    daemon().Notify("/t/1", kTransferInterface, "Transferred", Value("uint64 500"));
    Expect(Notification(kTransferMenu, "Transferred Percent: 50%\n"));
    // The other entries are not stored, and the object does not exist.
    ExpectAnswer("s", Normal("Transfer Status: \n"));
    Enter("x", Red("Filename property not set!") + kPhonebookPrompt);
}

class TransferOfAnInstanceTest : public TransferTest {
  protected:
    void SetUp() override {
        simulator::Options options = simulator::Options::Scripted();
        options.instance = "bench";
        StartDaemon(options).AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
        Start(WithArguments({"-bus:bench"}));
        OpenSelectedSession();
    }
};

TEST_F(TransferOfAnInstanceTest, UsesDefaultBusNameAndFails) {
    ExpectPullToPrintProperties();
    ExpectAnswer("s", Normal("Transfer Status: \n"));
    ExpectAnswer("d", Red("Filename property not set!"));
    const std::string failed =
        Red("Remote Call failed GDBus.Error:org.freedesktop.DBus.Error.ServiceUnknown: The name "
            "com.veltrisonix was not provided by any .service files\n");
    ExpectAnswer("p", failed);
    ExpectAnswer("r", failed);
    daemon().CompleteTransfer(Transfer());
    ExpectNoOutput(kTransferMenu);
    ExpectAnswer("c", failed + Red("Filename property not set!"));
    EXPECT_EQ(CountCalls("Suspend") + CountCalls("Resume") + CountCalls("Cancel"), 0U);
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
}

TEST_F(TransferOfAnInstanceTest, UsesDaemonWithDefaultBusName) {
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
    Expect(Notification(kTransferMenu, "Transferred Percent: 100%\n"));
}

}  // namespace
}  // namespace morvane_test
