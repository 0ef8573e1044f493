#include "console/console_output.h"

#include "support/messages.h"
#include "unit/captured_run.h"
#include "unit/rival.h"
#include "unit/system_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using morvane::kNormal;
using morvane::PROXY_Print;
using morvane::PROXY_Prompt;

using Writes = std::vector<std::string>;

struct ConsoleCall {
    const char* name;
    std::function<void()> make;
};

const std::vector<ConsoleCall> kCalls = {
    {"Print", [] { PROXY_Print(kNormal, "printed\n"); }},
    {"PrintNoPrompt", [] { morvane::PROXY_PrintNoPrompt(morvane::kRed, "printed beside\n"); }},
    {"Prompt", [] { PROXY_Prompt("Path", 1); }},
    {"Input", [] { morvane::PROXY_Input("Path", 1); }},
    {"TakeAway", [] { PROXY_Prompt("", 0); }}};

// What `act` writes, and then a message that shows whether it has left a prompt standing.
Writes WritesAndState(const std::function<void()>& act) {
    return WritesOf([&] {
        act();
        PROXY_Print(kNormal, "after\n");
    });
}

// `second` is made while `first` is at its write number `interrupted`.
Writes WritesOfBoth(const ConsoleCall& first, const ConsoleCall& second, std::size_t interrupted) {
    return WritesAndState([&] {
        Rival rival(second.make);
        std::atomic<std::size_t> count{0};
        write_substitute = [&](const void* bytes, std::size_t size) {
            if (count++ == interrupted) rival.GoAsFarAsPossible();
            return RealWrite(bytes, size);
        };
        first.make();
        rival.Join();
        write_substitute = nullptr;
    });
}

void ExpectTurns(const ConsoleCall& first, const ConsoleCall& second) {
    const Writes in_turn = WritesAndState([&] {
        first.make();
        second.make();
    });
    const std::size_t writes = WritesOf(first.make).size();
    for (std::size_t i = 0; i < writes; ++i)
        EXPECT_EQ(WritesOfBoth(first, second, i), in_turn)
            << second.name << " during write " << i << " of " << first.name;
}

TEST(ConsoleThreadsTest, TakeTurns) {
    for (const ConsoleCall& call : kCalls) {
        const ConsoleCall under_prompt = {call.name, [&] {
                                              PROXY_Prompt("Standing", 2);
                                              call.make();
                                          }};
        for (const ConsoleCall& second : kCalls) {
            ExpectTurns(call, second);
            ExpectTurns(under_prompt, second);
        }
    }
}

// The first write(2) gives `result` and `error`, and a positive result has written so many bytes.
std::string OutputAfter(ssize_t result, int error) {
    return OutputOf([&] {
        write_substitute = [&](const void* bytes, std::size_t /*count*/) {
            write_substitute = nullptr;
            errno = error;
            return result > 0 ? RealWrite(bytes, static_cast<std::size_t>(result)) : result;
        };
        PROXY_Print(kNormal, "one\n");
        PROXY_Print(kNormal, "two\n");
    });
}

TEST(WriteTest, ContinuesAfterAShortWriteOrARetryableErrorAndDropsTheMessageOtherwise) {
    const std::string one = Normal("one\n");
    const std::string two = Normal("two\n");
    EXPECT_EQ(OutputAfter(6, 0), one + two);
    EXPECT_EQ(OutputAfter(-1, EINTR), one + two);
    EXPECT_EQ(OutputAfter(-1, EAGAIN), one + two);
    EXPECT_EQ(OutputAfter(-1, EIO), two);
}

}  // namespace
}  // namespace morvane_test
