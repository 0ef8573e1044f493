#include "support/conversation.h"

#include <filesystem>
#include <string>
#include <utility>

namespace morvane_test {
namespace {

using simulator::kTransferInterface;

constexpr char kRefusal[] = "com.veltrisonix.Error.NotInProgress";

class TransferMenuTest : public ConversationTest {
  protected:
    void SetUp() override {
        OpenSelectedSession();
        PullAll("BEGIN:VCARD\n");
        // Otherwise the session's removal aborts the transfer, with a notification at an undefined
        // time.
        daemon().Reply("RemoveSession", Value("()"));
    }

    void ExpectAnswer(const std::string& line, const std::string& messages,
                      Here here = Here::Now()) {
        Enter(line, messages + Prompt(kTransferMenu), here);
    }

    std::string Removing() const { return Normal("Removing: " + PulledPhonebook() + "\n"); }
    bool FileExists() const { return std::filesystem::exists(PulledPhonebook()); }

    std::size_t TransferCalls() const {
        return CountCalls("Cancel") + CountCalls("Suspend") + CountCalls("Resume");
    }

    const std::string invalid_ = Red("Phonebook Access Proxy is invalid\n");
};

TEST_F(TransferMenuTest, PrintsLatestStatus) {
    ExpectAnswer("s", Normal("Transfer Status: queued\n"));
    daemon().Notify(Transfer(), kTransferInterface, "Status", Value("'100%s'"));
    Expect(Notification(kTransferMenu, "Status Attribute Received: 100%s\n"));
    ExpectAnswer("status", Normal("Transfer Status: 100%s\n"));
    daemon().Invalidate(Transfer(), kTransferInterface, "Status");
    Expect(Notification(kTransferMenu, "Status Attribute Received: Unknown\n"));
    ExpectAnswer("s", Normal("Transfer Status: \n"));
}

TEST_F(TransferMenuTest, SuspendsAndResumes) {
    for (const auto& [line, method] : {std::pair{"p", "Suspend"}, {"resume", "Resume"}}) {
        daemon().Reply(method, Value("()"));
        ExpectAnswer(line, "");
        ExpectCall(kTransferInterface + std::string(".") + method, "()");
        EXPECT_EQ(daemon().Calls().back().path, Transfer());
    }
    EXPECT_EQ(TransferCalls(), 2U);
    EXPECT_TRUE(FileExists());
}

TEST_F(TransferMenuTest, CancelReleasesTransferAndNextKeyLeavesMenu) {
    daemon().Reply("Cancel", Value("()"));
    for (const char* const line : {"s", "x", "q", "Q", "c", "?"}) {
        EXPECT_TRUE(FileExists());
        ExpectAnswer("c", Removing());
        EXPECT_FALSE(FileExists());
        ExpectAnswer("", "");
        Enter(line, Prompt(kPhonebookMenu));
        PullAll("BEGIN:VCARD\n");
    }
    EXPECT_EQ(CountCalls("Cancel"), 6U);
}

TEST_F(TransferMenuTest, CancelReleasesTransferEvenIfRefused) {
    daemon().Refuse("Cancel", kRefusal, "too late");
    ExpectAnswer("c",
                 Red(std::string("Remote Call failed GDBus.Error:") + kRefusal + ": too late\n") +
                     Removing());
    ExpectCall("Cancel", "()");
    EXPECT_FALSE(FileExists());
    Enter("h", Prompt(kPhonebookMenu));
}

TEST_F(TransferMenuTest, ExitReleasesTransferAndNextPullCreatesAnother) {
    Enter("x", Removing() + Prompt(kPhonebookMenu));
    EXPECT_FALSE(FileExists());
    EXPECT_EQ(TransferCalls(), 0U);
    Pull("0", "BEGIN:VCARD\n");
    daemon().Reply("Suspend", Value("()"));
    ExpectAnswer("p", "");
    EXPECT_EQ(daemon().Calls().back().path, Transfer());
    Enter("exit", Red("Invalid Selection\n") + Prompt(kTransferMenu));
    Enter("x", Normal("Removing: " + PulledCard() + "\n") + Prompt(kPhonebookMenu));
    Enter("x", Prompt());
}

TEST_F(TransferMenuTest, QuitDeletesFileAfterRemoveSession) {
    daemon().AbortTransfer(Transfer());
    Expect(Notification(kTransferMenu, "Status Attribute Received: error\n"));
    daemon().Hang("RemoveSession");
    Type("  Quit");
    ExpectCall("RemoveSession", "(objectpath '" + Session() + "',)");
    EXPECT_TRUE(FileExists());
    EXPECT_EQ(TransferCalls(), 0U);
    daemon().Release();
    Expect(Removing());
    ExpectExit(0);
    EXPECT_FALSE(FileExists());
}

TEST_F(TransferMenuTest, InterruptDuringCallLeavesMenuWithoutMessage) {
    daemon().Hang("Suspend");
    Type("p");
    ExpectCall("Suspend", "()");
    daemon().AbortTransfer(Transfer());
    Expect(Normal("Status Attribute Received: error\n"));
    Interrupt();
    daemon().Release();
    Expect(Red("Remote Call failed GDBus.Error:com.veltrisonix.Error.NotInProgress: Transfer is "
               "not active\n") +
           Removing());
    ExpectExit(0);
}

TEST_F(TransferMenuTest, ChecksSessionBeforeLeavingCancelledTransfer) {
    daemon().Reply("Cancel", Value("()"));
    ExpectAnswer("c", Removing());
    daemon().SetConnectionState(Session(), 4);
    ExpectNoOutput(kTransferMenu);
    Enter("s", invalid_ + Prompt());
}

}  // namespace
}  // namespace morvane_test
