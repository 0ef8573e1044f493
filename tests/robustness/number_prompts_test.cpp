#include "robustness/prompt_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// Answers that a prompt rejects.

namespace morvane_test {
namespace {

// Numbers out of range. The last ones are valid if truncated to 16 bits.
std::vector<std::string> OutOfRange(const PromptRow& row) {
    constexpr unsigned kMultipleOf16Bits = 0xFFFF0000U;
    std::vector<unsigned> numbers = {row.limit, row.limit + 1, 4294967294, 65536 + row.smallest,
                                     kMultipleOf16Bits + row.smallest};
    if (row.smallest > 0) numbers.push_back(row.smallest - 1);
    std::vector<std::string> answers;
    for (const unsigned number : numbers) answers.push_back(std::to_string(number));
    return answers;
}

class RejectingPrompt : public EachPromptTest {
  protected:
    std::string Error() const {
        return Red(prompt().error + "\n") + Prompt(MenuAbove(prompt().id));
    }

    // Opens the prompt again from its menu.
    void OpenAgain(Here here = Here::Now()) {
        const std::vector<Answer>& way = prompt().opening;
        auto step = std::find_if(way.begin(), way.end(), [](const Answer& answer) {
            return answer.at == MenuAbove(prompt().id);
        });
        for (; step != way.end(); ++step) Enter(step->line, QuestionAndPrompt(step->next), here);
    }
};

class NumberPrompt : public RejectingPrompt {};

TEST_P(NumberPrompt, RejectsNumbersOutOfRange) {
    Reach(prompt());
    std::vector<std::string> answers = OutOfRange(prompt());
    // "x", and the number that represents it internally, leave the prompt.
    for (const char* const answer : {"x", "x0", "xyz", "4294967295", "-1"})
        answers.emplace_back(answer);
    for (const std::string& answer : answers) {
        SCOPED_TRACE(answer);
        Enter(answer, Error());
        OpenAgain();
    }
    EXPECT_EQ(CountCalls(prompt().call.method), 0U);
}

TEST_P(RejectingPrompt, ReportsLossOfSessionBeforeInvalidAnswer) {
    Reach(prompt());
    InSession(prompt().id) ? LoseConnection(prompt().segment) : RemoveClient(prompt().segment);
    Enter(prompt().asks == Asks::kNumber ? "x" : "1G", prompt().lost + Prompt());
}

const auto kNumbers = [](const PromptCase& prompt) { return prompt.asks == Asks::kNumber; };
const auto kRejecting = [](const PromptCase& prompt) {
    return prompt.asks == Asks::kNumber || prompt.id == PromptId::kHandle;
};

INSTANTIATE_TEST_SUITE_P(, NumberPrompt, testing::ValuesIn(PromptCasesWith(kNumbers)),
                         NameOfPrompt);
INSTANTIATE_TEST_SUITE_P(, RejectingPrompt, testing::ValuesIn(PromptCasesWith(kRejecting)),
                         NameOfPrompt);

}  // namespace
}  // namespace morvane_test
