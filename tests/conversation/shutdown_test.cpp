#include "support/conversation.h"

#include <gtest/gtest.h>

#include <csignal>

// What ends the tool before the first prompt, or without the menus; at every prompt, see
// robustness/input_torture_test.cpp.

namespace morvane_test {
namespace {

class ShutDown : public ConversationTest {};

TEST_F(ShutDown, QuitsWhenInputEndedBeforeAnythingElse) {
    Launch(Wired(Wiring::kPipes));
    console().CloseInput();
    Await(Banner() + Prompt());
    ExpectExit(0);
}

TEST_F(ShutDown, QuitsOnALineTypedBeforeThePrompt) {
    Launch();
    Type("q");
    Await(Banner() + Prompt());
    ExpectExit(0);
}

TEST_F(ShutDown, InterruptInTheStartPauseEndsToo) {
    StartDaemon();
    Launch();
    Await("Found Client ");
    Interrupt();
    Type("h");
    ExpectExit(0, Console::Rest::kIgnored);
}

TEST_F(ShutDown, OtherSignalsKeepTheirMeaning) {
    for (const int number : {SIGTERM, SIGQUIT}) {
        Start();
        console().Signal(number);
        console().ExpectEndBySignal(number);
    }
}

}  // namespace
}  // namespace morvane_test
