#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kUsage =
    "Usage: morvane <options>, where <options> are:\n"
    "\t-bus[:<instance>]  - DBus bus name instance.\n";

struct CommandLineRow {
    std::string name;
    std::vector<std::string> arguments;
    std::string result;  ///< the instance, or the message before the usage
};

void PrintTo(const CommandLineRow& row, std::ostream* stream) {
    *stream << row.name;
}

class CommandLine : public ConversationTest, public testing::WithParamInterface<CommandLineRow> {};

const auto kRowName = [](const auto& test) { return test.param.name; };

class AcceptedCommandLine : public CommandLine {};

TEST_P(AcceptedCommandLine, SelectsInstance) {
    simulator::Options options = simulator::Options::Scripted();
    options.instance = GetParam().result;
    StartDaemon(options);
    Start(WithArguments(GetParam().arguments));
}

const std::string kLongestInstance(255 - std::string("com.veltrisonix.").size(), 'a');

const CommandLineRow kAccepted[] = {
    {"NoArguments", {}, ""},
    {"BareSwitch", {"-bus"}, ""},
    {"EmptyInstance", {"-bus:"}, ""},
    {"Instance", {"-bus:two"}, "two"},
    {"InstanceOfSeveralElements", {"-bus:a.b-c"}, "a.b-c"},
    {"InstanceUpToABlank", {"-bus:a b"}, "a"},
    {"InstanceUpToATab", {"-bus:a\tb"}, "a"},
    {"NothingBeforeABlank", {"-bus: a"}, ""},
    {"NothingBeforeATab", {"-bus:\ta"}, ""},
    {"AnythingElseAfterTheSwitch", {"-busXYZ"}, ""},
    {"ColonLaterInTheSwitch", {"-busX:two"}, ""},
    {"LastInstance", {"-bus:one", "-bus:two"}, "two"},
    {"LaterSwitchesWithoutInstance", {"-bus:one", "-bus", "-busXYZ"}, "one"},
    {"LaterEmptyInstance", {"-bus:one", "-bus:"}, ""},
    {"LaterShorterInstance", {"-bus:longer", "-bus:two"}, "two"},
    {"LongestBusName", {"-bus:" + kLongestInstance}, kLongestInstance},
};

INSTANTIATE_TEST_SUITE_P(, AcceptedCommandLine, testing::ValuesIn(kAccepted), kRowName);

class RefusedCommandLine : public CommandLine {};

TEST_P(RefusedCommandLine, PrintsUsage) {
    Launch(WithArguments(GetParam().arguments));
    Expect(GetParam().result + kUsage);
    ExpectExit(255);
}

const CommandLineRow kRejected[] = {
    {"NoDash", {"bus"}, "Unrecognized command line option bus\n"},
    {"EmptyArgument", {""}, "Unrecognized command line option \n"},
    {"FormatInArgument", {"100%s"}, "Unrecognized command line option 100%s\n"},
    {"UnknownSwitch", {"-x"}, "Unrecognized command line switch 'x'\n"},
    {"LongSwitch", {"--help"}, "Unrecognized command line switch '-'\n"},
    {"DashAlone", {"-"}, std::string("Unrecognized command line switch '") + '\0' + "'\n"},
    {"CapitalLetter", {"-Bus"}, "Unrecognized command line switch 'B'\n"},
    {"OneLetterOfTheSwitch", {"-b"}, ""},
    {"TwoLettersOfTheSwitch", {"-bu"}, ""},
    {"MisspeltSwitch", {"-bux"}, ""},
    {"TwoMistakes", {"-bus:one", "-y", "-x"}, "Unrecognized command line switch 'y'\n"},
    {"MistakeAfterAGoodSwitch", {"-bus:one", "two"}, "Unrecognized command line option two\n"},
    {"InstanceOf261Characters", {"-bus:" + std::string(261, 'a')}, ""},
};

INSTANTIATE_TEST_SUITE_P(, RefusedCommandLine, testing::ValuesIn(kRejected), kRowName);

// Accepted as an argument, but not a valid bus name.
class RefusedBusNameTest : public ConversationTest,
                           public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(, RefusedBusNameTest,
                         testing::Values("7", "a.7b", "a..b", ".", "a.", "ü", "a/b", "a:b",
                                         std::string(240, 'i'), std::string(260, 'i'),
                                         std::string(260, 'i') + " " + std::string(300, 'i')));

TEST_P(RefusedBusNameTest, IsReported) {
    Launch(WithArguments({"-bus:" + GetParam()}));
    console().AwaitAll({"Error getting object manager client\n", Banner()});
    ExpectExitUnlessPrompted();
    EXPECT_EQ(console().Errors(), "");
}

}  // namespace
}  // namespace morvane_test
