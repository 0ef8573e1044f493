// The example sessions for a real daemon, played by the tool and the simulated one.

#include "play/files.h"
#include "play/play_fixture.h"
#include "play/session_file.h"
#include "support/conversation.h"
#include "support/programs.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace morvane_test {
namespace {

std::string Example(const std::string& file) {
    return MORVANE_SOURCE_DIR "/examples/" + file;
}

std::vector<std::string> ExampleSessions() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Example("")))
        if (entry.path().extension() == ".session") names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

class ExampleSession : public ConversationTest, public testing::WithParamInterface<std::string> {};

// Sessions with a file of their answers are compared line by line. On a busy machine, too, an
// announcement must not precede the result of the call, nor a transfer start before the tool has
// read its properties.
simulator::Options DaemonOf(const std::string& session) {
    simulator::Options options;
    if (std::filesystem::exists(Example(session + ".keys"))) {
        options.rate = 0;
        options.announce_delay = Stretched(std::chrono::milliseconds(500));
        options.start_delay = Stretched(std::chrono::milliseconds(1000));
    }
    return options;
}

TEST_P(ExampleSession, AgreesWithTheSimulator) {
    StartDaemon(DaemonOf(GetParam()));
    const std::string file = Example(GetParam() + ".session");
    std::vector<std::string> words = {"--timeout=" + std::to_string(Patience().count()) + "ms",
                                      file, "--"};
    std::istringstream launcher(Launcher());
    words.insert(words.end(), std::istream_iterator<std::string>(launcher), {});
    words.push_back(ToolPath());
    Console& played = Launch(Playing(words));
    played.SetPatience(Stretched(std::chrono::seconds(60)));
    played.Expect(file + ": agrees\n");
    played.ExpectExit(0);
}

TEST_P(ExampleSession, HasTheAnswersOfItsKeys) {
    std::ifstream keys(Example(GetParam() + ".keys"));
    if (!keys) return;  // not every session has them
    const play::SessionFile session =
        play::ParseSession(GetParam(), play::ReadFile(Example(GetParam() + ".session")));
    std::vector<std::string> answers;
    for (const play::Step& step : session.steps)
        if (step.action == play::Step::Action::kType) answers.push_back(step.text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(keys, line);) lines.push_back(line);
    EXPECT_EQ(answers, lines);
}

INSTANTIATE_TEST_SUITE_P(Play, ExampleSession, testing::ValuesIn(ExampleSessions()),
                         [](const auto& session) {
                             std::string name = session.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace morvane_test
