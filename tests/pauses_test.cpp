#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "support/captured_run.h"
#include "support/messages.h"
#include "support/system_calls.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

using morvane_test::Banner;
using morvane_test::Normal;
using morvane_test::Prompt;
using morvane_test::Red;

std::string Pause(int milliseconds) {
    return Normal("[" + std::to_string(milliseconds) + " ms]");
}

// What the menu thread prints without a daemon, with its pauses in their places.
std::string MenuThreadOutput(const std::string& input) {
    const auto run = morvane_test::Capture(
        [] {
            morvane_test::sleep_substitute = [](useconds_t microseconds) {
                PROXY_PrintNoPrompt(kNormal, "[%g ms]", microseconds / 1e3);
            };
            obexProxy.MenuThread();
            return 0;
        },
        input);
    EXPECT_EQ(run.status, 0);
    return run.Output();
}

TEST(PausesTest, LetTheMainThreadPrintBeforeTheBannerAndBeforeEachPrompt) {
    const std::string refused = Red("No Client available, start daemon.\n");
    EXPECT_EQ(MenuThreadOutput("h\nz\nq\n"), Pause(500) + Banner() + Pause(200) + Prompt() +
                                                 refused + Pause(200) + Prompt() + refused +
                                                 Pause(200) + Prompt());
}

// A blank line is asked again by the input itself.
TEST(PausesTest, DoNotComeAfterABlankLine) {
    EXPECT_EQ(MenuThreadOutput("\n \nq\n"),
              Pause(500) + Banner() + Pause(200) + Prompt() + Prompt() + Prompt());
}

}  // namespace
}  // namespace morvane
