#include "support/conversation.h"

#include <chrono>
#include <string>

namespace morvane_test {
namespace {

using simulator::kTransferInterface;

/// Notifications of a running transfer at prompts.
class TransferProgressTest : public ConversationTest {
  protected:
    /// Ends at the prompt of the transfer menu.
    void FollowTransfer(const std::string& content = std::string(1000, 'v')) {
        OpenSelectedSession();
        PullAll(content);
    }

    void Announce(const std::string& name, const std::string& value) {
        daemon().Notify(Transfer(), kTransferInterface, name, Value(value));
    }

    void ExpectNotice(const std::string& text, Here here = Here::Now()) {
        Expect(Notification(kTransferMenu, text + "\n"), here);
    }
};

TEST_F(TransferProgressTest, EachChangeIsPrintedAndPromptIsRedrawn) {
    FollowTransfer();
    Announce("Status", "'active'");
    Expect(
        "\n\x1b[0mStatus Attribute Received: active\n"
        "\x1b[1;32mVantor/Transfer Menu\x1b[1;31m > \x1b[0m");
    Announce("Size", "uint64 2000");
    ExpectNotice("Size Attribute Received: 2000");
    Announce("Transferred", "uint64 1000");
    ExpectNotice("Transferred Percent: 50%");

    // An incomplete line is kept.
    console().TypeBytes("st");
    Announce("Status", "'on its way'");
    ExpectNotice("Status Attribute Received: on its way");
    Enter("atus", Normal("Transfer Status: on its way\n") + Prompt(kTransferMenu));
}

TEST_F(TransferProgressTest, IsReportedInMainMenuWhileSessionIsNotRemoved) {
    FollowTransfer();
    daemon().Refuse("RemoveSession", "com.veltrisonix.Error.Failed", "busy", 1);
    daemon().SetConnectionState(Session(), 4);
    ExpectNoOutput(kTransferMenu);
    Enter("s", Red("Phonebook Access Proxy is invalid\n") +
                   Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: busy\n") +
                   Prompt());
    Announce("Transferred", "uint64 500");
    Expect(Notification("", "Transferred Percent: 50%\n"));
    EnterAndAwait("u", ValuePrompt("/User Id"));
    Announce("Transferred", "uint64 510");
    Expect(Notification("/User Id", "Transferred Percent: 51%\n"));
    Enter("me", Prompt());
    const std::string transfer = Transfer();
    daemon().Reply("RemoveSession", Value("()"));
    Enter("r", Normal("Removing: " + PulledPhonebook() + "\n") + Prompt());
    daemon().Notify(transfer, kTransferInterface, "Status", Value("'late'"));
    ExpectNoOutput();
}

TEST_F(TransferProgressTest, IsNotReportedAfterCancelOrExit) {
    FollowTransfer();
    daemon().Reply("Cancel", Value("()"));
    Enter("c", Normal("Removing: " + PulledPhonebook() + "\n") + Prompt(kTransferMenu));
    const std::string cancelled = Transfer();
    daemon().Notify(cancelled, kTransferInterface, "Status", Value("'late'"));
    ExpectNoOutput(kTransferMenu);
    Enter("h", Prompt(kPhonebookMenu));
    PullAll("again");
    daemon().Notify(cancelled, kTransferInterface, "Status", Value("'later'"));
    Announce("Status", "'active'");
    ExpectNotice("Status Attribute Received: active");
    const std::string left = Transfer();
    Enter("x", Normal("Removing: " + PulledPhonebook() + "\n") + Prompt(kPhonebookMenu));
    daemon().Notify(left, kTransferInterface, "Status", Value("'late'"));
    ExpectNoOutput(kPhonebookMenu);
}

TEST_F(TransferProgressTest, IsReportedFromStartToCompletion) {
    simulator::Options options = simulator::Options::Scripted();
    options.pace = simulator::TransferPace::kByRate;
    options.rate = 400;
    options.start_delay = std::chrono::milliseconds(1000);
    StartDaemon(options).AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
    FollowTransfer();
    ExpectNotice("Status Attribute Received: active");
    EnterAndAwait("p", "Status Attribute Received: suspended\n");
    EnterAndAwait("s", Normal("Transfer Status: suspended\n") + Prompt(kTransferMenu));
    EnterAndAwait("r", "Status Attribute Received: active\n");
    Await(Notification(kTransferMenu, "Transferred Percent: 100%\n") +
          Notification(kTransferMenu, "Status Attribute Received: complete\n"));
    Enter("d", Normal("Displaying: " + PulledPhonebook() + "\n") + Normal(std::string(512, 'v')) +
                   Normal(std::string(488, 'v')) + Normal("\n") + Prompt(kTransferMenu));
}

}  // namespace
}  // namespace morvane_test
