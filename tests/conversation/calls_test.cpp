#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Behaviour that all calls to the daemon share.

namespace morvane_test {
namespace {

class EveryOperation : public ConversationTest, public testing::WithParamInterface<Operation> {
  protected:
    const std::string& Method() const { return GetParam().method; }

    void OpenPhonebook(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().ForgetCalls();
    }

    // The next output is the result.
    void Perform(Here here = Here::Now()) {
        Begin(GetParam(), here);
        if (!GetParam().filters) return;
        Await(Prompt(kFilterMenu), here);
        Type("d", here);
    }
};

TEST_P(EveryOperation, CallsSessionAndPrintsReply) {
    const bool pulls = GetParam().reply_type == "(oa{sv})";
    OpenPhonebook();
    daemon().Reply(Method(), Value(GetParam().reply));
    Perform();
    Expect(GetParam().result + Prompt(pulls ? kTransferMenu : kPhonebookMenu));
    ExpectCall(Method(), GetParam().arguments);
    const simulator::Call call = daemon().Calls().back();
    EXPECT_EQ(call.method, Method());
    EXPECT_EQ(call.path, Session());
    EXPECT_EQ(call.interface, "com.veltrisonix.obex.PhonebookAccess1");
}

TEST_P(EveryOperation, PrintsErrorsAndCanBeRepeated) {
    OpenPhonebook();
    daemon().Refuse(Method(), "com.veltrisonix.Error.Failed", "100%s busy", 1);
    Perform();
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: 100%s busy\n") +
           kPhonebookPrompt);
    EXPECT_EQ(CountCalls(Method()), 1U);
    daemon().Reply(Method(), Value("(true,)"), 1);
    Perform();
    Expect(Red("Remote Call failed: Method “" + Method() + "” returned type “(b)”, but expected “" +
               GetParam().reply_type + "”\n") +
           kPhonebookPrompt);
    daemon().Reply(Method(), Value(GetParam().reply));
    Perform();
    Expect(GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryOperation, testing::ValuesIn(Operations()),
                         [](const auto& row) { return row.param.method; });

struct CallRow {
    std::string method;
    PromptId menu;
    std::vector<std::string> lines;
    std::string failure;
};

std::vector<CallRow> AllCalls() {
    const std::string transfer_failure = "Remote Call failed ";
    std::vector<CallRow> calls = {
        {"CreateSession", PromptId::kMain, {"c", "0"}, "Create Session failed "},
        {"SetUserId", PromptId::kMain, {"u", "me"}, "Set User Id failed "},
        {"SetPassword", PromptId::kMain, {"p", "secret"}, "Set Password failed "},
        {"RemoveSession", PromptId::kPhonebookMenu, {"x"}, "Remove Session failed "},
        {"Suspend", PromptId::kTransfer, {"p"}, transfer_failure},
        {"Resume", PromptId::kTransfer, {"r"}, transfer_failure},
        {"Cancel", PromptId::kTransfer, {"c"}, transfer_failure},
    };
    for (const Operation& operation : Operations())
        calls.push_back({operation.method, PromptId::kPhonebookMenu, operation.AllLines(),
                         "Remote Call failed: "});
    return calls;
}

class EveryCall : public ConversationTest, public testing::WithParamInterface<CallRow> {};

// The menu thread may be using the objects during the call.
TEST_P(EveryCall, DelaysRemovalsUntilResultIsPrinted) {
    const auto& [method, menu, lines, failure] = GetParam();
    OpenPrompt(menu);
    if (menu == PromptId::kPhonebookMenu) SelectPhonebook();
    daemon().Hang(method);
    daemon().ForgetCalls();
    for (const std::string& line : lines) Type(line);
    ASSERT_TRUE(daemon().AwaitCall(method, Patience()));
    daemon().RemoveDevice(kPhonePath);
    daemon().Crash();
    Await(Red(failure + "GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
                        "Message recipient disconnected from message bus without replying\n"));
    AwaitAll({"Removed " + kClient + "\n", std::string("Removed ") + kPhonePath + "\n"});
}

INSTANTIATE_TEST_SUITE_P(, EveryCall, testing::ValuesIn(AllCalls()),
                         [](const auto& call) { return call.param.method; });

}  // namespace
}  // namespace morvane_test
