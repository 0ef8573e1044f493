#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane_test {
namespace {

std::string Device(int number) {
    return "/com/veltrisonix/hci0/dev_" + std::to_string(number);
}

class MainMenuTest : public ConversationTest {
  protected:
    // The daemon has its client and no devices; the tool stands at its prompt.
    void StartWithoutDevices(Here here = Here::Now()) {
        StartDaemon();
        Start({}, here);
    }

    // The device list stands open and asks for a number. Two devices: first and second.
    void OpenDeviceSelection(Here here = Here::Now()) {
        StartWithoutDevices(here);
        AddDevice(Device(1), "00:00:00:00:00:01", "first", "", here);
        AddDevice(Device(2), "00:00:00:00:00:02", "second", "", here);
        Type("c", here);
        Expect(DeviceBox({"00:00:00:00:00:01 | first", "00:00:00:00:00:02 | second"}) +
                   ValuePrompt("/Select Device"),
               here);
    }
};

TEST_F(MainMenuTest, HelpShowsTheKeys) {
    StartWithoutDevices();
    for (const std::string word : {"h", "help", " h", "h please"}) {
        Type(word);
        Expect(MenuOf(PromptId::kMain) + Prompt());
    }
}

TEST_F(MainMenuTest, ReadsAsAConversationOnAPersonsTerminal) {
    StartDaemon();
    Start(Wired(Wiring::kPersonsTerminal));
    Type("help");
    Expect("help\n" + MenuOf(PromptId::kMain) + Prompt());
    Type("z");
    Expect("z\n" + kInvalidSelection + Prompt());
}

TEST_F(MainMenuTest, BlankLinesShowThePromptAgain) {
    StartWithoutDevices();
    Type("");
    Expect(Prompt());
    Type("  \t");
    Expect(Prompt());
}

TEST_F(MainMenuTest, OtherKeysAreInvalid) {
    StartWithoutDevices();
    for (const std::string word : {"C", "R", "L", "U", "P", "H", "x", "0", "?", "\xc3\xa4"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(kInvalidSelection + Prompt());
    }
}

// The dashes between the rows are a row without a key.
TEST_F(MainMenuTest, AZeroByteIsInvalid) {
    StartWithoutDevices();
    Type(std::string(1, '\0'));
    Expect(kInvalidSelection + Prompt());
}

TEST_F(MainMenuTest, EveryKeyButQuitNeedsAClient) {
    Launch();
    Await(Prompt());
    for (const std::string word : {"c", "r", "l", "u", "p", "h", "z", "C"}) {
        SCOPED_TRACE(word);
        Type(word);
        Expect(kNoClient + Prompt());
    }
    Type("Q");
    ExpectExit(0);
}

TEST_F(MainMenuTest, ClientThatLeftIsNotAvailable) {
    Start();
    RemoveClient();
    Type("h");
    Expect(kNoClient + Prompt());
    ReturnClient();
    Type("h");
    Expect(MenuOf(PromptId::kMain) + Prompt());
}

TEST_F(MainMenuTest, ListWithoutDevicesIsTheFrameAlone) {
    StartWithoutDevices();
    Type("l");
    Expect(DeviceList({}) + Prompt());
}

TEST_F(MainMenuTest, ListShowsDevicesInTheOrderOfTheirArrival) {
    StartWithoutDevices();
    AddDevice(Device(2), "00:00:00:00:00:02", "second");
    AddDevice(Device(1), "00:00:00:00:00:01", "first");
    Type("l");
    Expect(DeviceList({"00:00:00:00:00:02 | second", "00:00:00:00:00:01 | first"}) + Prompt());
}

TEST_F(MainMenuTest, ListForgetsDevicesThatLeft) {
    StartWithoutDevices();
    AddDevice(Device(1), "00:00:00:00:00:01", "first");
    AddDevice(Device(2), "00:00:00:00:00:02", "second");
    AddDevice(Device(3), "00:00:00:00:00:03", "third");
    RemoveDevice(Device(2));
    Type("l");
    Expect(DeviceList({"00:00:00:00:00:01 | first", "00:00:00:00:00:03 | third"}) + Prompt());
}

TEST_F(MainMenuTest, CreateWithoutDevicesReturnsToTheMenu) {
    StartWithoutDevices();
    Type("c");
    Expect(Red("No Clients\n") + Prompt());
    EXPECT_EQ(CountCalls("CreateSession"), 0U);
}

TEST_F(MainMenuTest, CreateAsksForADeviceByNumber) {
    OpenDeviceSelection();
    Type("1");
    ExpectCall("CreateSession",
               "('00:00:00:00:00:02', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    Await(Prompt(kPhonebookMenu));
}

TEST_F(MainMenuTest, NumberIsJudgedByTheListAsItIsNow) {
    OpenDeviceSelection();
    RemoveDevice(Device(1), "/Select Device");
    Type("0");
    ExpectCall("CreateSession",
               "('00:00:00:00:00:02', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    Await(Prompt(kPhonebookMenu));
}

TEST_F(MainMenuTest, DeviceThatJustCameCanBeChosen) {
    OpenDeviceSelection();
    AddDevice(Device(3), "00:00:00:00:00:03", "third", "/Select Device");
    Type("2");
    ExpectCall("CreateSession",
               "('00:00:00:00:00:03', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    Await(Prompt(kPhonebookMenu));
}

}  // namespace
}  // namespace morvane_test
