#include "simulator/daemon.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

const std::string kFirstSession = kClient + "/client/session0";
const std::string kSecondSession = kClient + "/client/session1";
const std::string kPhonebookAccess = "0000112f-0000-1000-8000-00805f9b34fb";
const std::string kCreateSession = "com.veltrisonix.obex.Client1.CreateSession";
const std::string kRemoveSession = "com.veltrisonix.obex.Client1.RemoveSession";
const std::string kFailed = "com.veltrisonix.Error.Failed";

class ClientTest : public ConversationTest {
  protected:
    void ExpectCreateSession() {
        ExpectCall(kCreateSession, "('" + std::string(kPhoneAddress) + "', {'Target': <'" +
                                       kPhonebookAccess + "'>})");
    }

    void ExpectRemoveSession(const std::string& session) {
        ExpectCall(kRemoveSession, "(objectpath '" + session + "',)");
    }

    void Announce(const std::string& session, const std::string& source) {
        daemon().Notify(session, simulator::kSessionInterface, "Source",
                        g_variant_new_string(source.c_str()));
    }
};

TEST_F(ClientTest, OpensAndRemovesSession) {
    Start();
    ChooseDevice();
    Expect(OpenedSession(kPhoneAddress) + Prompt(kPhonebookMenu));
    ExpectCreateSession();
    EXPECT_EQ(daemon().Calls().front().path, kClient);
    EXPECT_EQ(CountCalls("CreateSession"), 1U);
    Enter("x", Prompt());
    ExpectRemoveSession(kFirstSession);
    EXPECT_EQ(daemon().Calls().back().path, kClient);
    EXPECT_TRUE(daemon().Sessions().empty());
}

TEST_F(ClientTest, RemoveKeyRemovesLatestSessionAgain) {
    Start();
    Enter("r", Prompt());
    EXPECT_TRUE(daemon().Calls().empty());
    OpenSession();
    Enter("x", Prompt());
    ExpectRemoveSession(kFirstSession);
    Enter("r", Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: "
                   "No such session: " +
                   kFirstSession + "\n") +
                   Prompt());
    ExpectRemoveSession(kFirstSession);
    OpenSession();
    Enter("x", Prompt());
    ExpectRemoveSession(kSecondSession);
}

TEST_F(ClientTest, KeepsSessionThatWasNotRemovedUntilNextIsCreated) {
    OpenSession();
    daemon().Refuse("RemoveSession", kFailed, "Busy", 1);
    Enter("x",
          Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Busy\n") + Prompt());
    daemon().Refuse("CreateSession", kFailed, "Page time-out", 1);
    ChooseDevice();
    Expect(Red("Create Session failed GDBus.Error:com.veltrisonix.Error.Failed: Page time-out\n") +
           Prompt());
    Announce(kFirstSession, "Somewhere");
    Expect(Notification("", "Source Attribute Received: Somewhere\n"));
    Enter("r", Prompt());
    Announce(kFirstSession, "Elsewhere");
    ExpectNoOutput();
}

TEST_F(ClientTest, RemovalOfClientReleasesItsSession) {
    OpenSession();
    RemoveClient(kPhonebookMenu);
    ReturnClient(kPhonebookMenu);
    Announce(kFirstSession, "the session is closed");
    ExpectNoOutput(kPhonebookMenu);
    Enter("r", kClientGone + Prompt());
    Enter("r", Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

TEST_F(ClientTest, HandlesDaemonThatDisconnectsDuringCreateSession) {
    Start();
    daemon().Hang("CreateSession");
    ChooseDevice();
    ExpectCreateSession();
    daemon().LeaveBus();
    daemon().Release();
    Expect(UnknownSession("Disconnected") + kClientGone);
    ExpectRemoveSession(kFirstSession);
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n", Prompt()});
}

struct Credential {
    PromptId prompt;
    const char* key;
    const char* method;
};

class CredentialTest : public ClientTest, public testing::WithParamInterface<Credential> {
  protected:
    void ExpectSent(const std::string& typed, const std::string& sent, Here here = Here::Now()) {
        Enter(GetParam().key, QuestionAndPrompt(GetParam().prompt), here);
        Enter(typed, Prompt(), here);
        ExpectCall(std::string("com.veltrisonix.obex.Client1.") + GetParam().method,
                   "('" + sent + "',)", here);
    }
};

INSTANTIATE_TEST_SUITE_P(, CredentialTest,
                         testing::Values(Credential{PromptId::kUserId, "u", "SetUserId"},
                                         Credential{PromptId::kPassword, "p", "SetPassword"}),
                         [](const auto& test) { return RowOf(test.param.prompt).name; });

// Strings on the bus must be valid UTF-8: a truncated last character is dropped and invalid bytes
// are replaced.
TEST_P(CredentialTest, SendsWholeUtf8CharactersUpToLimit) {
    Start();
    const std::string most(RowOf(GetParam().prompt).limit, 'a');
    const std::string nearly_most = most.substr(1);
    const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                        {" a %s%n ", " a %s%n "},
                                                        {most + "b", most},
                                                        {nearly_most + "ü", nearly_most},
                                                        {"a\xff\xc3zü", "a?\?zü"},
                                                        {{"ab\0c", 4}, "ab"}};
    for (const auto& [typed, sent] : rows) ExpectSent(typed, sent);
    EXPECT_EQ(daemon().Calls().back().path, kClient);
    EXPECT_EQ(daemon().Calls().size(), std::size(rows));
}

}  // namespace
}  // namespace morvane_test
