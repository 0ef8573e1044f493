#include "app/obex_proxy.h"

#include "console/console_output.h"
#include "support/menus.h"
#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/simulated_bus.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The pauses of the menus in a session, with lines typed ahead.

namespace morvane_test {
namespace {

using morvane::obexProxy;

const std::string kPause = Normal("[200 ms]");
const std::string kInvalidSelection = Red("Invalid Selection\n");
const std::string kClientLost = Red("Client Proxy is invalid\n");
const std::string kPhonebookLost = Red("Phonebook Access Proxy is invalid\n");

struct Menu {
    PromptId id;
    std::vector<std::size_t> pauses;  // before each of its prompts
};

const Menu kMenus[] = {
    {PromptId::kPhonebookMenu, {1, 1, 1}},
    {PromptId::kPullAllFilters, {1, 1}},
    {PromptId::kPullFilters, {2, 1}},
    {PromptId::kListFilters, {2, 1}},
    {PromptId::kSearchFilters, {2, 1}},
    {PromptId::kSizeFilters, {2, 1}},
    {PromptId::kListSizeFilters, {2, 1}},
    // One more pause for the first notifications of the transfer.
    {PromptId::kTransfer, {2, 1}},
};

void PrintTo(const Menu& menu, std::ostream* stream) {
    *stream << RowOf(menu.id).name;
}

// Output while the menu is opened and gets one invalid key.
std::string OutputIn(const Menu& menu, const std::function<void(SimulatedBus&)>& prepare) {
    const auto run = [&] {
        SimulatedBus bus;
        bus.daemon().AddDevice("/dev_1", "00:1B:DC:07:31:9A", "Phone");
        obexProxy.ObjectAdded(simulator::kClientPath);
        obexProxy.ObjectAdded("/dev_1");
        prepare(bus);
        obexProxy.MenuThread();
    };
    std::string lines = "c\n0\ns\n0\n0\n";
    for (const Answer& answer : PathTo(menu.id)) lines += answer.line + "\n";
    return OutputOf(run, lines + "Z\n");
}

// Number of pauses between each of the menu's prompts and the prompt before it.
std::vector<std::size_t> PausesBeforePrompts(const std::string& output, const Menu& menu) {
    const std::regex event(
        "\x1b\\[0m\\[200 ms\\]\x1b\\[0m|"
        "\x1b\\[1;32m[^\x1b]*\x1b\\[0m\x1b\\[1;31m [>?] \x1b\\[0m");
    std::vector<std::size_t> pauses;
    std::size_t count = 0;
    for (std::sregex_iterator i(output.begin(), output.end(), event), end; i != end; ++i) {
        if (i->str() == kPause) {
            ++count;
            continue;
        }
        if (i->str() == Prompt(menu.id)) pauses.push_back(count);
        count = 0;
    }
    return pauses;
}

class MenuPauses : public testing::TestWithParam<Menu> {};

TEST_P(MenuPauses, PrecedeEachPrompt) {
    const std::string output = OutputIn(GetParam(), [](SimulatedBus& /*bus*/) {
        sleep_substitute = [](useconds_t microseconds) {
            morvane::PROXY_PrintNoPrompt(morvane::kNormal, "[%g ms]", microseconds / 1e3);
        };
    });
    EXPECT_EQ(PausesBeforePrompts(output, GetParam()), GetParam().pauses) << output;
}

TEST_P(MenuPauses, AreFollowedBySessionCheck) {
    const std::string output = OutputIn(GetParam(), [](SimulatedBus& bus) {
        static bool answered = false;
        write_substitute = [](const void* bytes, std::size_t count) {
            answered |=
                kInvalidSelection == std::string_view(static_cast<const char*>(bytes), count);
            return RealWrite(bytes, count);
        };
        sleep_substitute = [&bus](useconds_t /*microseconds*/) {
            if (!std::exchange(answered, false)) return;
            bus.daemon().SetConnectionState(bus.daemon().Sessions().back(), 0);
            DispatchSignals();
        };
    });
    const bool is_first = GetParam().id == PromptId::kPhonebookMenu;
    const std::string lost = is_first ? kClientLost : kPhonebookLost;
    EXPECT_NE(output.find(kInvalidSelection + lost), output.npos) << output;
}

INSTANTIATE_TEST_SUITE_P(, MenuPauses, testing::ValuesIn(kMenus),
                         [](const auto& row) { return RowOf(row.param.id).name; });

}  // namespace
}  // namespace morvane_test
