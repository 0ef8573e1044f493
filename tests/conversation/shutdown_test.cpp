#include "support/conversation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <string>

namespace morvane_test {
namespace {

class ShutDown : public ConversationTest {};

TEST_F(ShutDown, QuitsOnEveryWordForIt) {
    for (const std::string word : {"q", "Q", "quit", "Quit", "  q", "qx"}) {
        SCOPED_TRACE(word);
        Start();
        Type(word);
        ExpectExit(0);
    }
}

TEST_F(ShutDown, QuitsWithoutADaemon) {
    Launch();
    Await(Prompt());
    Type("q");
    ExpectExit(0);
}

TEST_F(ShutDown, QuitsAtTheEndOfInput) {
    for (const Wiring wiring : {Wiring::kTerminal, Wiring::kPipes}) {
        Start(Wired(wiring));
        console().CloseInput();
        ExpectExit(0);
    }
}

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

TEST_F(ShutDown, InterruptTakesEffectAtTheNextLine) {
    Start();
    Interrupt();
    EXPECT_FALSE(console().HasEnded());
    Type("h");
    ExpectExit(0);
}

TEST_F(ShutDown, InterruptTakesEffectAtTheEndOfInput) {
    Start();
    Interrupt();
    console().CloseInput();
    ExpectExit(0);
}

TEST_F(ShutDown, QuitKeyAfterAnInterruptIsHarmless) {
    Start();
    Interrupt();
    Type("q");
    ExpectExit(0);
}

TEST_F(ShutDown, ControlCIsAnInterrupt) {
    Start();
    PressControlC();
    EXPECT_FALSE(console().HasEnded());
    Type("h");
    ExpectExit(0);
}

TEST_F(ShutDown, SecondInterruptEndsAtOnce) {
    Start();
    Interrupt();
    console().Interrupt();
    console().ExpectEndBySignal(SIGINT);
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
    for (const int number : {SIGTERM, SIGQUIT, SIGHUP}) {
        Start();
        console().Signal(number);
        console().ExpectEndBySignal(number);
    }
}

TEST_F(ShutDown, ClosedTerminalEndsTheTool) {
    Start();
    console().HangUp();
    console().ExpectEndBySignal(SIGHUP);
}

TEST_F(ShutDown, ClosedTerminalIsTheEndOfInputUnderNohup) {
    Start(UnderNohup());
    console().HangUp();
    ExpectExit(0, Console::Rest::kIgnored);
    EXPECT_LT(console().CpuTime(), Stretched(std::chrono::seconds(5)));
}

TEST_F(ShutDown, LostBusEndsTheTool) {
    Start();
    bus().Kill();
    console().ExpectEndBySignal(SIGTERM);
}

}  // namespace
}  // namespace morvane_test
