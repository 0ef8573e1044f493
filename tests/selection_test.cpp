#include "support/conversation_test.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kSessionInterface;

constexpr char kMenu[] = "/Phonebook Menu";
constexpr char kLocation[] = "/Select Location";
constexpr char kPhonebook[] = "/Select Phonebook";

using Texts = std::vector<std::string>;

const Texts kLocations = {"int", "sim1", "sim2"};
const Texts kSimPhonebooks = {"pb", "cch", "ich", "och", "mch"};
const Texts kInternalPhonebooks = {"pb", "cch", "ich", "och", "mch", "spd", "fav"};

const std::string kSelected = Normal("Phonebook selected successfully\n") + Prompt(kMenu);
const std::string kInvalidLocation = Red("Invalid location selected\n") + Prompt(kMenu);
const std::string kInvalidPhonebook = Red("Invalid phone book selected\n") + Prompt(kMenu);
const std::string kNothingSelected = Red("No Phonebook selected\n") + Prompt(kMenu);
const std::string kSize = Normal("Phonebook Size 7\n") + Prompt(kMenu);
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n") + Prompt();

class SelectionTest : public ConversationTest {
  protected:
    void OpenSession(Here here = Here::Now()) {
        ConversationTest::OpenSession(0, here);
        daemon().Reply("GetSize", Value("(uint16 7,)"));
    }

    void AskForLocation(Here here = Here::Now()) {
        Type("s", here);
        Expect(
            Heading("Select a Phonebook Location") + Choices(kLocations) + ValuePrompt(kLocation),
            here);
    }

    // Answers the question for the location; the one for the phone book follows.
    void ChooseLocation(const std::string& answer, const Texts& phonebooks,
                        Here here = Here::Now()) {
        Type(answer, here);
        Expect(Heading("Select a Phonebook") + Choices(phonebooks) + ValuePrompt(kPhonebook), here);
    }

    void Answer(const std::string& answer, const std::string& result, Here here = Here::Now()) {
        Type(answer, here);
        Expect(result, here);
    }

    void SelectEach(unsigned location, const Texts& phonebooks, Here here = Here::Now()) {
        for (std::size_t index = 0; index < phonebooks.size(); ++index) {
            AskForLocation(here);
            ChooseLocation(std::to_string(location), phonebooks, here);
            Answer(std::to_string(index), kSelected, here);
            ExpectCall("com.veltrisonix.obex.PhonebookAccess1.Select",
                       "('" + kLocations[location] + "', '" + phonebooks[index] + "')", here);
        }
    }
};

TEST_F(SelectionTest, OffersSevenPhonebooksInInternalMemory) {
    OpenSession();
    SelectEach(0, kInternalPhonebooks);
    EXPECT_EQ(daemon().Calls().back().path, Session());
}

TEST_F(SelectionTest, OffersFivePhonebooksOnEachSim) {
    OpenSession();
    SelectEach(1, kSimPhonebooks);
    SelectEach(2, kSimPhonebooks);
}

TEST_F(SelectionTest, RefusesOtherLocationsAndAsksForNoPhonebook) {
    OpenSession();
    for (const char* const answer : {"3", "4294967295", "-1", "x", "x0"}) {
        AskForLocation();
        Answer(answer, kInvalidLocation);
    }
    Answer("g", kNothingSelected);
    EXPECT_EQ(CountCalls("Select"), 0U);
}

TEST_F(SelectionTest, RefusesOtherPhonebooks) {
    OpenSession();
    for (const char* const answer : {"7", "4294967295", "x"}) {
        AskForLocation();
        ChooseLocation("0", kInternalPhonebooks);
        Answer(answer, kInvalidPhonebook);
    }
    for (const char* const answer : {"5", "6"}) {
        AskForLocation();
        ChooseLocation("2", kSimPhonebooks);
        Answer(answer, kInvalidPhonebook);
    }
    Answer("g", kNothingSelected);
    EXPECT_EQ(CountCalls("Select"), 0U);
}

TEST_F(SelectionTest, AsksAgainForWhatIsNoNumber) {
    OpenSession();
    AskForLocation();
    Answer("sim1", Red("Invalid value\n") + ValuePrompt(kLocation));
    Answer("4294967296", Red("Invalid value\n") + ValuePrompt(kLocation));
    Answer("", ValuePrompt(kLocation));
    ChooseLocation(" 1st", kSimPhonebooks);
    Answer(" ", Red("Invalid value\n") + ValuePrompt(kPhonebook));
    Answer("+4", kSelected);
    ExpectCall("Select", "('sim1', 'mch')");
}

TEST_F(SelectionTest, IsKeptWhenALaterChoiceIsRefused) {
    OpenSession();
    SelectPhonebook();
    AskForLocation();
    Answer("3", kInvalidLocation);
    Answer("g", kSize);
    AskForLocation();
    ChooseLocation("1", kSimPhonebooks);
    Answer("5", kInvalidPhonebook);
    Answer("g", kSize);
}

TEST_F(SelectionTest, IsLostWhenTheDaemonRefuses) {
    OpenSession();
    SelectPhonebook();
    Answer("g", kSize);
    daemon().Refuse("Select", "com.veltrisonix.Error.Forbidden", "Phone is locked", 1);
    AskForLocation();
    ChooseLocation("1", kSimPhonebooks);
    Answer("0", Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Forbidden: "
                    "Phone is locked\n") +
                    Prompt(kMenu));
    Answer("g", kNothingSelected);
    for (const char* const key : {"a", "p"}) Answer(key, kNothingSelected);
    SelectPhonebook();
    Answer("g", kSize);
}

TEST_F(SelectionTest, IsNotMadeByAReplyOfAnotherType) {
    OpenSession();
    daemon().Reply("Select", Value("('done',)"), 1);
    AskForLocation();
    ChooseLocation("1", kSimPhonebooks);
    Answer("0",
           Red("Remote Call failed: Method “Select” returned type “(s)”, but expected “()”\n") +
               Prompt(kMenu));
    Answer("g", kNothingSelected);
}

TEST_F(SelectionTest, LooksForTheSessionBeforeItJudgesTheAnswer) {
    OpenSession();
    AskForLocation();
    LoseConnection(kLocation);
    Answer("9", kSessionLost);

    OpenSession();
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    LoseConnection(kPhonebook);
    Answer("9", kSessionLost);
    EXPECT_EQ(CountCalls("Select"), 0U);
}

// The question was asked by a session that is gone; the new client knows nothing of it.
TEST_F(SelectionTest, EndsWhenTheClientIsReplacedMeanwhile) {
    OpenSession();
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    RemoveClient(kPhonebook);
    ReturnClient(kPhonebook);
    Answer("0", kSessionLost);
    EXPECT_EQ(CountCalls("Select"), 0U);
}

TEST_F(SelectionTest, LeavesTheRegistryFreeWhileItAsks) {
    OpenSession();
    AskForLocation();
    ExpectQuiet(kLocation);
    ChooseLocation("0", kInternalPhonebooks);
    ExpectQuiet(kPhonebook);
    Answer("0", kSelected);
}

TEST_F(SelectionTest, KeepsTheRegistryLockedWhileItCalls) {
    OpenSession();
    daemon().AddDevice("/dev_gone", "00:00:00:00:00:02", "gone");
    Expect(Notice(kMenu, "Found Device /dev_gone\n"));
    daemon().Hang("Select");
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    Type("0");
    ExpectCall("Select", "('int', 'pb')");
    daemon().RemoveDevice("/dev_gone");
    daemon().Release();
    Expect(Normal("Phonebook selected successfully\n"));
    Await("Removed /dev_gone\n");
}

TEST_F(SelectionTest, EndOfInputLeavesEveryQuestion) {
    OpenSession();
    AskForLocation();
    console().CloseInput();
    Expect(kInvalidLocation);
    ExpectExit(0);
}

TEST_F(SelectionTest, AnUnterminatedAnswerIsTheEndOfInput) {
    Start(Wired(Wiring::kPipes));
    OpenSession();
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    console().TypeBytes("0");
    console().CloseInput();
    Expect(kInvalidPhonebook);
    ExpectExit(0);
    EXPECT_EQ(CountCalls("Select"), 0U);
}

TEST_F(SelectionTest, TellsThatTheDaemonDiedInTheCall) {
    OpenSession();
    daemon().Hang("Select");
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    Type("0");
    ExpectCall("Select", "('int', 'pb')");
    daemon().Crash();
    Await(
        Red("Remote Call failed: GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
            "Message recipient disconnected from message bus without replying\n"));
    AwaitAll({"Removed /com/veltrisonix/obex\n", std::string("Removed ") + kPhonePath + "\n"});
}

TEST_F(SelectionTest, GivesUpASilentDaemonAfter25Seconds) {
    OpenSession();
    daemon().Hang("Select");
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    console().SetPatience(Stretched(std::chrono::seconds(60)));
    const auto before = std::chrono::steady_clock::now();
    Answer("0", Red("Remote Call failed: Timeout was reached\n") + Prompt(kMenu));
    const auto waited = std::chrono::steady_clock::now() - before;
    EXPECT_GE(waited, std::chrono::seconds(24));
    Answer("g", kNothingSelected);
}

// The tool's texts are English; GLib's must not be translated among them.
TEST_F(SelectionTest, KeepsErrorsInEnglish) {
    if (!std::filesystem::exists("/usr/share/locale/de/LC_MESSAGES/glib20.mo"))
        GTEST_SKIP() << "there is no translation that could be shown";
    const char* const launcher = std::getenv("MORVANE_TEST_LAUNCHER");
    const std::string german = "/usr/bin/env LC_ALL=C.UTF-8 LANGUAGE=de ";
    setenv("MORVANE_TEST_LAUNCHER", (german + (launcher ? launcher : "")).c_str(), 1);
    OpenSession();
    daemon().Reply("Select", Value("('done',)"));
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    Answer("0",
           Red("Remote Call failed: Method “Select” returned type “(s)”, but expected “()”\n") +
               Prompt(kMenu));
}

}  // namespace
}  // namespace morvane_test
