#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "support/bench.h"
#include "support/captured_run.h"
#include "support/messages.h"
#include "support/system_calls.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The pauses of the session's menus, in front of a daemon, with lines typed ahead.

namespace morvane {
namespace {

using morvane_test::Bench;
using morvane_test::HearNotices;
using morvane_test::Normal;
using morvane_test::OutputOf;
using morvane_test::Prompt;
using morvane_test::RealWrite;
using morvane_test::Red;
using morvane_test::sleep_substitute;
using morvane_test::write_substitute;

const std::string kPause = Normal("[200 ms]");
const std::string kInvalidSelection = Red("Invalid Selection\n");
const std::string kPhonebookGone = Red("Phonebook Access Proxy is invalid\n");

struct Menu {
    std::string name;
    std::string opening;  // typed from the phone book menu's prompt on
    std::string segment;
    std::vector<std::size_t> pauses;  // before each of its prompts, if one more line is typed
    std::string lost;
};

const Menu kMenus[] = {
    {"Phonebook", "", "/Phonebook Menu", {1, 1, 1}, Red("Client Proxy is invalid\n")},
    {"PullAllFilters", "a\n", "/Filter Menu", {1, 1}, kPhonebookGone},
    {"PullFilters", "p\n1\n", "/Filter Menu", {2, 1}, kPhonebookGone},
    {"ListFilters", "l\n", "/Filter Menu", {2, 1}, kPhonebookGone},
    {"SearchFilters", "o\n0\n\n", "/Filter Menu", {2, 1}, kPhonebookGone},
    {"SizePhonebookFilters", "m\n", "/Filter Menu", {2, 1}, kPhonebookGone},
    {"SizeListingFilters", "n\n", "/Filter Menu", {2, 1}, kPhonebookGone},
    // The first of them is time for the transfer's first notices.
    {"Transfer", "a\nd\n", "/Transfer Menu", {2, 1}, kPhonebookGone},
};

void PrintTo(const Menu& menu, std::ostream* stream) {
    *stream << menu.name;
}

// What is printed while the menu is opened and gets one invalid key.
std::string OutputIn(const Menu& menu, const std::function<void(Bench&)>& prepare) {
    const auto run = [&] {
        Bench bench;
        bench.daemon().AddDevice("/dev_1", "00:1B:DC:07:31:9A", "Phone");
        obexProxy.ObjectAdded(simulator::kClientPath);
        obexProxy.ObjectAdded("/dev_1");
        prepare(bench);
        obexProxy.MenuThread();
    };
    return OutputOf(run, "c\n0\ns\n0\n0\n" + menu.opening + "Z\n");
}

std::size_t Count(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

// How many pauses were made between each of the menu's prompts and the prompt before it.
std::vector<std::size_t> PausesBeforePrompts(const std::string& output, const Menu& menu) {
    std::vector<std::size_t> pauses;
    std::size_t begin = 0;
    for (std::size_t end; (end = output.find(" \x1b[0m", begin)) != output.npos; begin = end) {
        end += std::string(" \x1b[0m").size();
        const std::string_view part = std::string_view(output).substr(begin, end - begin);
        const std::string prompt = Prompt(menu.segment);
        if (part.size() >= prompt.size() && part.substr(part.size() - prompt.size()) == prompt)
            pauses.push_back(Count(part, kPause));
    }
    return pauses;
}

class MenuPauses : public testing::TestWithParam<Menu> {};

TEST_P(MenuPauses, AreMadeBeforeEachPrompt) {
    const std::string output = OutputIn(GetParam(), [](Bench& /*bench*/) {
        sleep_substitute = [](useconds_t microseconds) {
            PROXY_PrintNoPrompt(kNormal, "[%g ms]", microseconds / 1e3);
        };
    });
    EXPECT_EQ(PausesBeforePrompts(output, GetParam()), GetParam().pauses) << output;
}

TEST_P(MenuPauses, EndWithALookAtTheSession) {
    const std::string output = OutputIn(GetParam(), [](Bench& bench) {
        static bool answered = false;
        write_substitute = [](const void* bytes, std::size_t count) {
            answered |=
                kInvalidSelection == std::string_view(static_cast<const char*>(bytes), count);
            return RealWrite(bytes, count);
        };
        sleep_substitute = [&bench](useconds_t /*microseconds*/) {
            if (!std::exchange(answered, false)) return;
            bench.daemon().SetConnectionState(bench.daemon().Sessions().back(), 0);
            HearNotices();
        };
    });
    EXPECT_NE(output.find(kInvalidSelection + GetParam().lost), output.npos) << output;
}

INSTANTIATE_TEST_SUITE_P(, MenuPauses, testing::ValuesIn(kMenus),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace morvane
