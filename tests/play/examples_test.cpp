// The example sessions for a real daemon, played by the tool and the simulated one.

#include "play/play_fixture.h"
#include "support/conversation.h"
#include "support/programs.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

namespace morvane_test {
namespace {

std::vector<std::string> ExampleSessions() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(MORVANE_SOURCE_DIR "/examples"))
        if (entry.path().extension() == ".session") names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

class ExampleSession : public ConversationTest, public testing::WithParamInterface<std::string> {};

TEST_P(ExampleSession, AgreesWithTheSimulator) {
    StartDaemon(simulator::Options());
    const std::string file = MORVANE_SOURCE_DIR "/examples/" + GetParam() + ".session";
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

INSTANTIATE_TEST_SUITE_P(Play, ExampleSession, testing::ValuesIn(ExampleSessions()),
                         [](const auto& session) {
                             std::string name = session.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace morvane_test
