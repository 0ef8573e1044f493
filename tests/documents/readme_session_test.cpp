// Plays the session in the README with morvane-play against scripts/demo.

#include "documents/document.h"
#include "documents/script_tree.h"
#include "support/discovery.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace morvane_test {
namespace {

std::string Replace(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

// The order of the messages that both threads print at the start is undefined.
std::string ReadmeSession() {
    const std::string session = FencedBlock(ReadSource("README.md"), "console");
    return AwaitingDiscovery(
        Replace(Replace(session, "^\\$ scripts/demo\n((?:.+\n)+)", "% any order\n$1% end\n"),
                "/tmp/morvane-demo\\.XXXXXX/", "[..]/"));
}

// Even on a busy machine, the result of a call must precede the announcement, and the tool must
// have read a transfer's properties before the transfer starts.
std::string Delays() {
    return " --announce-delay=" + std::to_string(Stretched(Duration(500)).count()) +
           " --start-delay=" + std::to_string(Stretched(Duration(1000)).count());
}

TEST(Readme, ShowsASessionOfTheDemo) {
    const ScriptTree tree;
    tree.Write("readme.session", ReadmeSession());
    EXPECT_EQ(
        tree.OutputOf("build/demo/morvane-play --timeout=" + std::to_string(Patience().count()) +
                          "ms --simulator=scripts/demo readme.session -- scripts/demo" + Delays(),
                      0),
        "readme.session: agrees\n");
}

}  // namespace
}  // namespace morvane_test
