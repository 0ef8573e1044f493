#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

class MainMenuTest : public ConversationTest {};

TEST_F(MainMenuTest, WorksOnInteractiveTerminal) {
    Start(Wired(Wiring::kInteractiveTerminal));
    Enter("help", "help\n" + MenuOf(PromptId::kMain) + Prompt());
    Enter("z", "z\n" + kInvalidSelection + Prompt());
}

TEST_F(MainMenuTest, EveryKeyExceptQuitNeedsClient) {
    Launch();
    Await(Prompt());
    std::string keys = "zC";
    for (const KeyRow& row : KeysOf(PromptId::kMain))
        if (row.move != Move::kQuit) keys += row.key;
    for (const char key : keys) {
        SCOPED_TRACE(key);
        Enter({&key, 1}, kNoClient + Prompt());
    }
    Type("Q");
    ExpectExit(0);
}

TEST_F(MainMenuTest, CreateWithoutDevicesReturnsToMenu) {
    StartDaemon();
    Start();
    Enter("c", Red("No Clients\n") + Prompt());
    EXPECT_EQ(CountCalls("CreateSession"), 0U);
}

TEST_F(MainMenuTest, NumberRefersToCurrentDeviceList) {
    StartDaemon();
    Start();
    AddDevice("/dev_1", "00:00:00:00:00:01", "first");
    AddDevice("/dev_2", "00:00:00:00:00:02", "second");
    Enter("c", DeviceBox({"00:00:00:00:00:01 | first", "00:00:00:00:00:02 | second"}) +
                   Prompt(PromptId::kDevice));
    RemoveDevice("/dev_1", "/Select Device");
    AddDevice("/dev_3", "00:00:00:00:00:03", "third", "/Select Device");
    AddDevice("/dev_4", "00:00:00:00:00:04", "fourth", "/Select Device");
    Type("2");
    ExpectCall("CreateSession",
               "('00:00:00:00:00:04', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    Await(Prompt(kPhonebookMenu));
}

}  // namespace
}  // namespace morvane_test
