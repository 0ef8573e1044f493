// The tool and the simulator as programs; the simulator is controlled over D-Bus.

#include "support/conversation.h"
#include "support/gdbus.h"
#include "support/programs.h"

#include <iterator>
#include <sstream>

namespace morvane_test {
namespace {

constexpr char kAster[] = "/com/veltrisonix/hci0/dev_02_00_5E_10_00_01";

class SimulatorProgram : public ConversationTest {
  protected:
    void SetUp() override {
        std::istringstream launcher(Launcher());
        ConsoleOptions options = Wired(Wiring::kPipes);
        options.prefix.assign(std::istream_iterator<std::string>(launcher), {});
        options.program = SimulatorPath();
        options.arguments = {"--phones=1"};
        Launch(options).Expect("Serving com.veltrisonix\n");
    }
    void TearDown() override {
        Execute("quit",
                "The simulator ends: shown at once; an open session ends at the next answer");
        ConversationTest::TearDown();
    }

    void Execute(const std::string& command, const std::string& answer) {
        EXPECT_EQ(CallControl(bus().Address(), "Execute", {command}), "('" + answer + "\\n',)\n");
    }
};

TEST_F(SimulatorProgram, CanBeControlledWhileToolRuns) {
    Launch();
    const std::string found = std::string("Found Device ") + kAster + "\n";
    AwaitAll({"Found Client " + kClient + "\n", found, Prompt()});
    Execute("remove 02:00:5E:10:00:01",
            "Aster is out of reach: shown at once; an open session ends at the next answer");
    Expect(Notification("", std::string("Removed ") + kAster + "\n", kRedSequence));
    Execute("return Aster", "Aster is back in reach");
    Expect(Notification("", found));

    EXPECT_EQ(CallControl(bus().Address(), "Refuse",
                          {"Select", "com.veltrisonix.Error.Failed", "enough", "1"}),
              "()\n");
    for (const char* const key : {"c", "0", "s", "0", "0"}) Type(key);
    Await(kRefused + kPhonebookPrompt);
    for (const char* const key : {"s", "0", "0"}) Type(key);
    Await("Phonebook selected successfully\n");
}

}  // namespace
}  // namespace morvane_test
