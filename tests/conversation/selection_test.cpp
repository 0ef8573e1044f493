#include "support/conversation.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using Texts = std::vector<std::string>;

const Texts& kLocations = RowOf(PromptId::kLocation).choices;
const Texts kSimPhonebooks = {"pb", "cch", "ich", "och", "mch"};
const Texts& kInternalPhonebooks = RowOf(PromptId::kPhonebook).choices;

const std::string kSelected = Normal("Phonebook selected successfully\n") + kPhonebookPrompt;
const std::string kNothingSelected = Red("No Phonebook selected\n") + kPhonebookPrompt;
const std::string kSize = Normal("Phonebook Size 7\n") + kPhonebookPrompt;

class SelectionTest : public ConversationTest {
  protected:
    void OpenSession(Here here = Here::Now()) {
        ConversationTest::OpenSession(0, here);
        daemon().Reply("GetSize", Value("(uint16 7,)"));
    }

    void AskForLocation(Here here = Here::Now()) {
        Enter("s", QuestionAndPrompt(PromptId::kLocation), here);
    }

    // Types the location; expects the choice of phone books.
    void ChooseLocation(const std::string& answer, const Texts& phonebooks,
                        Here here = Here::Now()) {
        Type(answer, here);
        Expect(Heading("Select a Phonebook") + Choices(phonebooks) + Prompt(PromptId::kPhonebook),
               here);
    }

    void SelectEach(unsigned location, const Texts& phonebooks, Here here = Here::Now()) {
        for (std::size_t index = 0; index < phonebooks.size(); ++index) {
            AskForLocation(here);
            ChooseLocation(std::to_string(location), phonebooks, here);
            Enter(std::to_string(index), kSelected, here);
            ExpectCall("com.veltrisonix.obex.PhonebookAccess1.Select",
                       "('" + kLocations[location] + "', '" + phonebooks[index] + "')", here);
        }
    }
};

TEST_F(SelectionTest, IsRequiredExceptForUpdateAndFields) {
    OpenSession();
    daemon().Reply("ListFilterFields", Value("(['N'],)"));
    for (const KeyRow& row : KeysOf(PromptId::kPhonebookMenu))
        if (row.needs_selection) Enter(std::string{row.key}, kNothingSelected);
    Enter("u", Normal("Counters updated\n") + kPhonebookPrompt);
    Enter("f", Heading("Filter Fields") + Lines({" N"}) + kPhonebookPrompt);
    EXPECT_EQ(daemon().Calls().size(), 3U);
}

TEST_F(SelectionTest, OffersFewerPhonebooksOnSim) {
    OpenSession();
    SelectEach(0, kInternalPhonebooks);
    SelectEach(1, kSimPhonebooks);
    SelectEach(2, kSimPhonebooks);
    EXPECT_EQ(daemon().Calls().back().path, Session());
}

TEST_F(SelectionTest, IsKeptAfterInvalidChoice) {
    OpenSession();
    SelectPhonebook();
    AskForLocation();
    Enter("3", Red("Invalid location selected\n") + kPhonebookPrompt);
    Enter("g", kSize);
    for (const char* const only_internal : {"5", "6"}) {
        AskForLocation();
        ChooseLocation("2", kSimPhonebooks);
        Enter(only_internal, Red("Invalid phone book selected\n") + kPhonebookPrompt);
        Enter("g", kSize);
    }
    EXPECT_EQ(CountCalls("Select"), 1U);
}

TEST_F(SelectionTest, IsClearedIfDaemonRefusesNextOne) {
    OpenSession();
    SelectPhonebook();
    Enter("g", kSize);
    daemon().Refuse("Select", "com.veltrisonix.Error.Forbidden", "Phone is locked", 1);
    AskForLocation();
    ChooseLocation("1", kSimPhonebooks);
    Enter("0", Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Forbidden: "
                   "Phone is locked\n") +
                   kPhonebookPrompt);
    Enter("g", kNothingSelected);
    SelectPhonebook();
    Enter("g", kSize);
}

TEST_F(SelectionTest, ErrorsAreNotTranslated) {
    if (!std::filesystem::exists("/usr/share/locale/de/LC_MESSAGES/glib20.mo"))
        GTEST_SKIP() << "the German translation of GLib is not installed";
    const char* const launcher = std::getenv("MORVANE_TEST_LAUNCHER");
    const std::string german = "/usr/bin/env LC_ALL=C.UTF-8 LANGUAGE=de ";
    setenv("MORVANE_TEST_LAUNCHER", (german + (launcher ? launcher : "")).c_str(), 1);
    OpenSession();
    daemon().Reply("Select", Value("('done',)"));
    AskForLocation();
    ChooseLocation("0", kInternalPhonebooks);
    Enter("0", Red("Remote Call failed: Method “Select” returned type “(s)”, but expected “()”\n") +
                   kPhonebookPrompt);
}

}  // namespace
}  // namespace morvane_test
