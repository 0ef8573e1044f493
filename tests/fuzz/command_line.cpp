#include "app/command_line.h"

#include "app/obex_proxy.h"
#include "fuzz/fuzz.h"
#include "support/captured_output.h"
#include "support/messages.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace morvane_fuzz {
namespace {

using morvane_test::Printed;

struct Outcome {
    bool accepted;
    std::string instance;
    std::string shown;
};

bool operator==(const Outcome& one, const Outcome& other) {
    return one.accepted == other.accepted && one.instance == other.instance &&
           one.shown == other.shown;
}

void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << outcome.accepted << ' ' << testing::PrintToString(outcome.instance) << ' '
            << testing::PrintToString(outcome.shown);
}

Outcome Refusal(const std::string& instance, const std::string& reason = "") {
    return {false, instance,
            reason +
                "Usage: morvane <options>, where <options> are:\n"
                "\t-bus[:<instance>]  - DBus bus name instance.\n"};
}

Outcome Expected(const std::vector<std::string>& arguments) {
    std::string instance = "as it was";
    for (const std::string& argument : arguments) {
        if (argument[0] != '-')
            return Refusal(instance, "Unrecognized command line option " + argument + "\n");
        if (argument[1] != 'b')
            return Refusal(instance, "Unrecognized command line switch '" +
                                         std::string(1, argument.c_str()[1]) + "'\n");
        if (argument.rfind("-bus", 0) != 0) return Refusal(instance);
        if (argument.rfind("-bus:", 0) != 0) continue;
        const std::string text = argument.substr(5, argument.find_first_of(" \t", 5) - 5);
        if (text.size() > 260) return Refusal(instance);
        instance = text;
    }
    return {true, instance, ""};
}

Outcome Parse(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"morvane"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    Outcome outcome = {false, "as it was", ""};
    outcome.shown = Printed([&] {
        outcome.accepted =
            morvane::ParseCommandLine(static_cast<int>(argv.size()), argv.data(), outcome.instance);
    });
    return outcome;
}

bool IsNameElement(std::string_view element) {
    return !element.empty() && (element[0] < '0' || element[0] > '9') &&
           std::all_of(element.begin(), element.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                      c == '_' || c == '-';
           });
}

// What the bus takes as the name of a service.
bool IsBusName(const std::string& name) {
    std::size_t begin = 0;
    std::size_t end = 0;
    for (; (end = name.find('.', begin)) != std::string::npos; begin = end + 1)
        if (!IsNameElement(std::string_view(name).substr(begin, end - begin))) return false;
    return begin > 0 && name.size() <= 255 && IsNameElement(std::string_view(name).substr(begin));
}

// A bad name is told on standard output; with a good one it is the missing bus that is complained
// about, elsewhere.
void CheckBusName(const std::string& instance) {
    static std::string complaint;
    g_set_printerr_handler([](const gchar* text) { complaint = text; });
    complaint.clear();
    morvane::ObexProxy proxy("Title");
    proxy.DBusInstance(instance);
    const std::string name = "com.veltrisonix" + (instance.empty() ? "" : "." + instance);
    RequireEqual(proxy.GetBusName(), name, "the bus name");
    const std::string shown = Printed([&] { proxy.GDBusRun(); });
    g_set_printerr_handler(nullptr);
    const bool good = IsBusName(name);
    RequireEqual(shown, good ? "" : morvane_test::Red("Error getting object manager client\n"),
                 "whether a bus name is refused");
    RequireEqual(!complaint.empty(), good, "whether the bus was looked for");
}

}  // namespace

// Arguments, each with a zero byte between it and the next.
void Check(Input input) {
    std::vector<std::string> arguments;
    while (!input.IsEmpty()) arguments.push_back(input.Until('\0'));
    const Outcome outcome = Parse(arguments);
    RequireEqual(outcome, Expected(arguments), "what the command line means");
    if (outcome.accepted) CheckBusName(outcome.instance);
}

}  // namespace morvane_fuzz
