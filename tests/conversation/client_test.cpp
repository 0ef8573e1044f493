#include "simulator/daemon.h"
#include "support/conversation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>

namespace morvane_test {
namespace {

const std::string kFirstSession = kClient + "/client/session0";
const std::string kSecondSession = kClient + "/client/session1";
const std::string kPhonebookAccess = "0000112f-0000-1000-8000-00805f9b34fb";
const std::string kCreateSession = "com.veltrisonix.obex.Client1.CreateSession";
const std::string kRemoveSession = "com.veltrisonix.obex.Client1.RemoveSession";
const std::string kFailed = "com.veltrisonix.Error.Failed";

const std::string kInvalidClient = Red("Client Proxy is invalid\n");

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

TEST_F(ClientTest, OpensAndRemovesASession) {
    Start();
    ChooseDevice();
    Expect(OpenedSession(kPhoneAddress) + Prompt(kPhonebookMenu));
    ExpectCreateSession();
    EXPECT_EQ(daemon().Calls().front().path, kClient);
    EXPECT_EQ(CountCalls("CreateSession"), 1U);
    Type("x");
    Expect(Prompt());
    ExpectRemoveSession(kFirstSession);
    EXPECT_EQ(daemon().Calls().back().path, kClient);
    EXPECT_TRUE(daemon().Sessions().empty());
    Announce(kFirstSession, "nobody follows this session any more");
    ExpectQuiet();
}

TEST_F(ClientTest, RemovesTheLastSessionAgainWhenAskedTo) {
    Start();
    Type("r");
    Expect(Prompt());
    EXPECT_TRUE(daemon().Calls().empty());
    OpenSession();
    Type("x");
    Expect(Prompt());
    ExpectRemoveSession(kFirstSession);
    Type("r");
    Expect(Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: "
               "No such session: " +
               kFirstSession + "\n") +
           Prompt());
    ExpectRemoveSession(kFirstSession);
    OpenSession();
    Type("x");
    Expect(Prompt());
    ExpectRemoveSession(kSecondSession);
}

TEST_F(ClientTest, StaysInTheMainMenuWhenNoSessionCanBeOpened) {
    Start();
    daemon().Refuse("CreateSession", kFailed, "Page time-out", 1);
    ChooseDevice();
    Expect(Red("Create Session failed GDBus.Error:com.veltrisonix.Error.Failed: Page time-out\n") +
           Prompt());
    ExpectCreateSession();
    daemon().Reply("CreateSession", Value("('/not/an/object/path',)"), 1);
    ChooseDevice();
    Expect(Red("Create Session failed Method “CreateSession” returned type “(s)”, but expected "
               "“(o)”\n") +
           Prompt());
    Type("r");
    Expect(Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
    OpenSession();
    Type("x");
    Expect(Prompt());
    ExpectRemoveSession(kFirstSession);
    daemon().Refuse("CreateSession", kFailed, "Page time-out", 1);
    ChooseDevice();
    Await("Page time-out\n" + (kResetSequence + Prompt()));
    daemon().Refuse("RemoveSession", kFailed, "Gone", 1);
    Type("r");
    Expect(Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Gone\n") +
           Prompt());
    ExpectRemoveSession(kFirstSession);
}

TEST_F(ClientTest, LeavesASessionThatIsNotConnected) {
    auto options = simulator::Options::Scripted();
    options.connection_state = 4;
    StartDaemon(options).AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
    Start();
    ChooseDevice();
    Expect(Normal("Session Disconnected\n"));
    Await(Normal("Fixed Image Size: Supported\n"));
    Expect(kInvalidClient + Prompt());
    ExpectRemoveSession(kFirstSession);
}

TEST_F(ClientTest, KeepsFollowingASessionThatCannotBeRemoved) {
    OpenSession();
    daemon().Refuse("RemoveSession", kFailed, "Busy", 1);
    Type("x");
    Expect(Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Busy\n") +
           Prompt());
    Announce(kFirstSession, "Somewhere");
    Expect(Notice("", "Source Attribute Received: Somewhere\n"));
    Type("r");
    Expect(Prompt());
    Announce(kFirstSession, "Elsewhere");
    ExpectQuiet();
}

TEST_F(ClientTest, KeepsTheOldSessionWhenNoNewOneCanBeOpened) {
    OpenSession();
    daemon().Refuse("RemoveSession", kFailed, "Busy", 1);
    Type("x");
    Await("Busy\n" + (kResetSequence + Prompt()));
    daemon().Refuse("CreateSession", kFailed, "Page time-out", 1);
    ChooseDevice();
    Await("Page time-out\n" + (kResetSequence + Prompt()));
    Announce(kFirstSession, "Somewhere");
    Expect(Notice("", "Source Attribute Received: Somewhere\n"));
}

TEST_F(ClientTest, DropsTheOldSessionWhenTheNewOneStands) {
    OpenSelectedSession();
    PullAll("one");
    daemon().Refuse("RemoveSession", kFailed, "Busy", 1);
    daemon().SetConnectionState(kFirstSession, 3);
    ExpectQuiet(kTransferMenu);
    Type("s");
    Await(Red("Phonebook Access Proxy is invalid\n"));
    Expect(Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.Failed: Busy\n") +
           Prompt());
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
    ChooseDevice();
    Expect(Normal("Session Connected\n"));
    Await(Normal("Fixed Image Size: Supported\n"));
    Expect(Normal("Removing: " + PulledPhonebook() + "\n") + Prompt(kPhonebookMenu));
    EXPECT_FALSE(std::filesystem::exists(PulledPhonebook()));
    Announce(kFirstSession, "Somewhere");
    ExpectQuiet(kPhonebookMenu);
    Type("x");
    Expect(Prompt());
    ExpectRemoveSession(kFirstSession);
    ExpectRemoveSession(kSecondSession);
}

// The session's context goes with its client, and the file with the context.
TEST_F(ClientTest, TakesItsSessionAlongWhenItGoes) {
    OpenSelectedSession();
    PullAll("one");
    daemon().RemoveClient();
    Expect(Notice(kTransferMenu, "Removing: " + PulledPhonebook() + "\n") +
           Notice(kTransferMenu, "Removed " + kClient + "\n", kRedSequence));
    EXPECT_FALSE(std::filesystem::exists(PulledPhonebook()));
    Type("s");
    Expect(Red("Phonebook Access Proxy is invalid\n") + Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
    ReturnClient();
    Type("r");
    Expect(Prompt());
    EXPECT_EQ(CountCalls("RemoveSession"), 0U);
}

TEST_F(ClientTest, LeavesASessionWhoseDaemonWentMeanwhile) {
    Start();
    daemon().Hang("CreateSession");
    ChooseDevice();
    ExpectCreateSession();
    daemon().LeaveBus();
    daemon().Release();
    Expect(UnknownSession("Disconnected") + kInvalidClient);
    ExpectRemoveSession(kFirstSession);
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n", Prompt()});
}

TEST_F(ClientTest, ReportsADaemonThatDiesWhileItRemovesTheSession) {
    OpenSession();
    daemon().Hang("RemoveSession");
    Type("x");
    ExpectRemoveSession(kFirstSession);
    daemon().Crash();
    Expect(
        Red("Remove Session failed GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
            "Message recipient disconnected from message bus without replying\n"));
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n", Prompt()});
    EXPECT_EQ(console().Output().find("Attribute Received"), std::string::npos);
}

struct Credential {
    std::string name;
    std::string key;
    std::string method;
    std::string operation;
    PromptId prompt;
};

void PrintTo(const Credential& credential, std::ostream* stream) {
    *stream << credential.name;
}

const Credential kCredentials[] = {
    {"UserId", "u", "SetUserId", "Set User Id", PromptId::kUserId},
    {"Password", "p", "SetPassword", "Set Password", PromptId::kPassword},
};

class CredentialTest : public ClientTest, public testing::WithParamInterface<Credential> {
  protected:
    std::size_t Limit() const { return RowOf(GetParam().prompt).past; }

    void Ask() {
        Type(GetParam().key);
        Expect(Asking(GetParam().prompt));
    }

    void ExpectSent(const std::string& text) {
        ExpectCall("com.veltrisonix.obex.Client1." + GetParam().method, "('" + text + "',)");
    }

    std::string Failure(const std::string& message) {
        return Red(GetParam().operation + " failed " + message + "\n");
    }

    std::string Fill(std::size_t length) const {
        return std::string("abcdefghijklmnopqrstuvwxyz").substr(0, length);
    }
};

INSTANTIATE_TEST_SUITE_P(, CredentialTest, testing::ValuesIn(kCredentials),
                         [](const auto& test) { return test.param.name; });

TEST_P(CredentialTest, SendsAtMostTheLimit) {
    Start();
    const std::size_t limit = Limit();
    for (const std::size_t length : {limit + 5, limit + 1, limit, limit - 1}) {
        Ask();
        Type(Fill(length));
        Expect(Prompt());
        ExpectSent(Fill(std::min(length, limit)));
    }
    EXPECT_EQ(daemon().Calls().back().path, kClient);
    EXPECT_EQ(daemon().Calls().size(), 4U);
}

TEST_P(CredentialTest, SendsWhatWasTyped) {
    Start();
    for (const char* const text : {"", "x", " a b ", "%s%n"}) {
        Ask();
        Type(text);
        Expect(Prompt());
        ExpectSent(text);
    }
}

// The bus carries whole characters only: one that the limit cuts is left out, and bytes that are
// none are replaced.
TEST_P(CredentialTest, SendsValidTextOnly) {
    Start();
    const std::string fill = Fill(Limit() - 1);
    Ask();
    Type(fill + "ü");
    Expect(Prompt());
    ExpectSent(fill);
    Ask();
    Type(
        "a\xff"
        "b\xc3"
        "cü");
    Expect(Prompt());
    ExpectSent("a?b?cü");
}

TEST_P(CredentialTest, SendsNothingBehindAZeroByte) {
    Start();
    Ask();
    Type(std::string_view("ab\0c", 4));
    Expect(Prompt());
    ExpectSent("ab");
}

TEST_P(CredentialTest, ReportsARefusal) {
    Start();
    daemon().Refuse(GetParam().method, "com.veltrisonix.Error.InvalidArguments", "Not 100%s", 1);
    Ask();
    Type("a");
    Expect(Failure("GDBus.Error:com.veltrisonix.Error.InvalidArguments: Not 100%s") + Prompt());
    daemon().Reply(GetParam().method, Value("('surprise',)"), 1);
    Ask();
    Type("b");
    Expect(Failure("Method “" + GetParam().method + "” returned type “(s)”, but expected “()”") +
           Prompt());
    Ask();
    Type("c");
    Expect(Prompt());
}

// A removal waits for the end of the call, and so its line comes after the call's.
TEST_P(CredentialTest, LetsNothingBeRemovedDuringTheCall) {
    Start();
    daemon().Hang(GetParam().method);
    Ask();
    Type("a");
    ExpectSent("a");
    daemon().RemoveDevice(kPhonePath);
    daemon().Crash();
    Expect(
        Failure("GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
                "Message recipient disconnected from message bus without replying"));
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n", Prompt()});
}

}  // namespace
}  // namespace morvane_test
