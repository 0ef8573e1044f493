// The example sessions for a real daemon, played by the tool and the simulated one.

#include "play/files.h"
#include "play/play_fixture.h"
#include "play/session_file.h"
#include "support/discovery.h"
#include "support/patience.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

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

std::string ReadExample(const std::string& session) {
    return play::ReadFile(Example(session + ".session"));
}

// Even on a busy machine, the result of a call must precede the announcement, and the tool must
// have read a transfer's properties before the transfer starts.
std::vector<std::string> FastButDelayed() {
    return {"--rate=0",
            "--announce-delay=" + std::to_string(Stretched(std::chrono::milliseconds(500)).count()),
            "--start-delay=" + std::to_string(Stretched(std::chrono::milliseconds(1000)).count())};
}

class ExampleSession : public testing::TestWithParam<std::string> {};

// Sessions with a file of their answers are compared line by line.
TEST_P(ExampleSession, AgreesWithTheSimulator) {
    std::string session = AwaitingDiscovery(ReadExample(GetParam()));
    std::vector<std::string> options;
    if (std::filesystem::exists(Example(GetParam() + ".keys"))) options = FastButDelayed();
    // On a busy machine the transfer would be complete before it is suspended.
    if (GetParam() == "suspend-resume") {
        options.emplace_back("--rate=1");
        constexpr std::string_view kResumed = "Status Attribute Received: active\n";
        session.insert(session.rfind(kResumed) + kResumed.size(), "% tell complete transfer\n");
    }
    const PlayResult result = PlayOnSimulator(session, options);
    EXPECT_EQ(result.output, "a.session: agrees\n");
    EXPECT_EQ(result.status, 0);
}

TEST_P(ExampleSession, HasTheAnswersOfItsKeys) {
    std::ifstream keys(Example(GetParam() + ".keys"));
    if (!keys) return;  // not every session has a .keys file
    const play::SessionFile session = play::ParseSession(GetParam(), ReadExample(GetParam()));
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

// The literal text below a heading of the manual.
std::string ManualSession() {
    const std::string page = play::ReadFile(MORVANE_SOURCE_DIR "/docs/morvane-play.1");
    constexpr std::string_view kBegin = ".Bd -literal -offset indent\n";
    const std::size_t begin = page.find(kBegin, page.find(".Sh SESSION FILES")) + kBegin.size();
    const std::string text = page.substr(begin, page.find(".Ed\n", begin) - begin);
    return std::regex_replace(text, std::regex(R"(\\&)"), "");
}

TEST(ManualTest, SessionAgreesWithTheSimulator) {
    const std::string session = AwaitingDiscovery(ManualSession());
    EXPECT_EQ(PlayOnSimulator(session, FastButDelayed()).output, "a.session: agrees\n");
}

struct Late {
    const char* name;
    std::vector<std::string> commands;  ///< executed before the tool starts
    const char* session;                ///< inserted before the example
};

class LateDaemon : public testing::TestWithParam<Late> {};

TEST_P(LateDaemon, IsAwaitedByTheShortestExample) {
    std::string session = AwaitingDiscovery(ReadExample("smoke"));
    session.insert(session.find("% any order"),
                   "...\nVantor >\n" + std::string(GetParam().session));
    std::vector<std::string> options = FastButDelayed();
    options.emplace_back("--phones=1");
    options.insert(options.end(), GetParam().commands.begin(), GetParam().commands.end());
    EXPECT_EQ(PlayOnSimulator(session, options).output, "a.session: agrees\n");
}

INSTANTIATE_TEST_SUITE_P(Play, LateDaemon,
                         testing::Values(Late{"Objects",
                                              {"--do=remove-client", "--do=remove Aster"},
                                              "% tell add-client\n% tell return Aster\n"},
                                         Late{"Process", {"--do=crash"}, "% tell come-back\n"}),
                         [](const auto& late) { return std::string(late.param.name); });

}  // namespace
}  // namespace morvane_test
