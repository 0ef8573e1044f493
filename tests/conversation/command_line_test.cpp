#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kUsage =
    "Usage: morvane <options>, where <options> are:\n"
    "\t-bus[:<instance>]  - DBus bus name instance.\n";

class CommandLine : public ConversationTest {
  protected:
    // The tool looks for the daemon under com.veltrisonix and `suffix`.
    void ExpectBusName(const std::vector<std::string>& arguments, const std::string& suffix,
                       Here here = Here::Now()) {
        simulator::Options options = simulator::Options::Scripted();
        options.instance = suffix;
        StartDaemon(options);
        Start(WithArguments(arguments), here);
    }

    // The tool says `message` and the usage, and nothing else happens.
    void ExpectRefusal(const std::vector<std::string>& arguments, const std::string& message,
                       Here here = Here::Now()) {
        Launch(WithArguments(arguments));
        Expect(message + kUsage, here);
        ExpectExit(255, Console::Rest::kNone, here);
    }
};

TEST_F(CommandLine, NoArgumentsMeanNoInstance) {
    ExpectBusName({}, "");
}

TEST_F(CommandLine, BareSwitchMeansNoInstance) {
    ExpectBusName({"-bus"}, "");
}

TEST_F(CommandLine, EmptyInstanceMeansNone) {
    ExpectBusName({"-bus:"}, "");
}

TEST_F(CommandLine, InstanceIsAppendedToTheBusName) {
    ExpectBusName({"-bus:two"}, "two");
}

TEST_F(CommandLine, InstanceMayHaveSeveralElements) {
    ExpectBusName({"-bus:a.b-c"}, "a.b-c");
}

TEST_F(CommandLine, InstanceEndsAtABlank) {
    ExpectBusName({"-bus:a b"}, "a");
}

TEST_F(CommandLine, InstanceEndsAtATab) {
    ExpectBusName({"-bus:a\tb"}, "a");
}

TEST_F(CommandLine, InstanceThatBeginsWithABlankIsEmpty) {
    ExpectBusName({"-bus: a"}, "");
}

TEST_F(CommandLine, InstanceThatBeginsWithATabIsEmpty) {
    ExpectBusName({"-bus:\ta"}, "");
}

TEST_F(CommandLine, AnythingElseAfterTheSwitchIsIgnored) {
    ExpectBusName({"-busXYZ"}, "");
}

TEST_F(CommandLine, ColonLaterInTheSwitchIsIgnored) {
    ExpectBusName({"-busX:two"}, "");
}

TEST_F(CommandLine, LastInstanceDecides) {
    ExpectBusName({"-bus:one", "-bus:two"}, "two");
}

TEST_F(CommandLine, LaterSwitchWithoutInstanceChangesNothing) {
    ExpectBusName({"-bus:one", "-bus", "-busXYZ"}, "one");
}

TEST_F(CommandLine, LaterEmptyInstanceWins) {
    ExpectBusName({"-bus:one", "-bus:"}, "");
}

TEST_F(CommandLine, ShorterInstanceReplacesAllOfALongerOne) {
    ExpectBusName({"-bus:longer", "-bus:two"}, "two");
}

TEST_F(CommandLine, ArgumentWithoutDashIsRefused) {
    ExpectRefusal({"bus"}, "Unrecognized command line option bus\n");
}

TEST_F(CommandLine, EmptyArgumentIsRefused) {
    ExpectRefusal({""}, "Unrecognized command line option \n");
}

TEST_F(CommandLine, ArgumentIsShownAsItIs) {
    ExpectRefusal({"100%s"}, "Unrecognized command line option 100%s\n");
}

TEST_F(CommandLine, UnknownSwitchIsRefused) {
    ExpectRefusal({"-x"}, "Unrecognized command line switch 'x'\n");
}

TEST_F(CommandLine, OnlyTheSwitchesFirstLetterIsShown) {
    ExpectRefusal({"--help"}, "Unrecognized command line switch '-'\n");
}

TEST_F(CommandLine, DashAloneIsRefused) {
    ExpectRefusal({"-"}, std::string("Unrecognized command line switch '") + '\0' + "'\n");
}

TEST_F(CommandLine, CapitalLetterIsRefused) {
    ExpectRefusal({"-Bus"}, "Unrecognized command line switch 'B'\n");
}

TEST_F(CommandLine, SwitchOfOneLetterGetsTheUsageAlone) {
    ExpectRefusal({"-b"}, "");
}

TEST_F(CommandLine, SwitchOfTwoLettersGetsTheUsageAlone) {
    ExpectRefusal({"-bu"}, "");
}

TEST_F(CommandLine, MisspeltSwitchGetsTheUsageAlone) {
    ExpectRefusal({"-bux"}, "");
}

TEST_F(CommandLine, FirstMistakeDecides) {
    ExpectRefusal({"-bus:one", "-y", "-x"}, "Unrecognized command line switch 'y'\n");
}

TEST_F(CommandLine, MistakeAfterAGoodSwitchIsRefused) {
    ExpectRefusal({"-bus:one", "two"}, "Unrecognized command line option two\n");
}

TEST_F(CommandLine, InstanceOf261CharactersGetsTheUsageAlone) {
    ExpectRefusal({"-bus:" + std::string(261, 'a')}, "");
}

TEST_F(CommandLine, LongestBusNameIsTaken) {
    const std::string instance(255 - std::string("com.veltrisonix.").size(), 'a');
    ExpectBusName({"-bus:" + instance}, instance);
}

// The command line takes it, but there can be no such name on a bus.
class RefusedBusNameTest : public ConversationTest,
                           public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(, RefusedBusNameTest,
                         testing::Values("7", "a.7b", "a..b", ".", "a.", "ü", "a/b", "a:b",
                                         std::string(240, 'i'), std::string(260, 'i'),
                                         std::string(260, 'i') + " " + std::string(300, 'i')));

TEST_P(RefusedBusNameTest, EndsAtOnce) {
    Launch(WithArguments({"-bus:" + GetParam()}));
    Expect(Red("Run menu\n") + Red("Error getting object manager client\n") + Banner());
    ExpectExit(0);
    EXPECT_EQ(console().Errors(), "");
}

}  // namespace
}  // namespace morvane_test
