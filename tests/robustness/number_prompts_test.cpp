#include "robustness/prompt_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// Answers that a prompt refuses.

namespace morvane_test {
namespace {

// Besides what leaves any number prompt. The last are valid where only 16 bits are looked at.
std::vector<std::string> OutOfRange(const PromptRow& row) {
    constexpr unsigned kMultipleOf16Bits = 0xFFFF0000U;
    std::vector<unsigned> numbers = {row.limit, row.limit + 1, 4294967294, 65536 + row.smallest,
                                     kMultipleOf16Bits + row.smallest};
    if (row.smallest > 0) numbers.push_back(row.smallest - 1);
    std::vector<std::string> answers;
    for (const unsigned number : numbers) answers.push_back(std::to_string(number));
    return answers;
}

class RefusingPrompt : public EachPromptTest {
  protected:
    std::string Error() const {
        return Red(prompt().error + "\n") + Prompt(MenuAbove(prompt().id));
    }

    // From the menu above, with each question on the way.
    void OpenAgain(Here here = Here::Now()) {
        const std::vector<Answer>& way = prompt().opening;
        auto step = std::find_if(way.begin(), way.end(), [](const Answer& answer) {
            return answer.at == MenuAbove(prompt().id);
        });
        for (; step != way.end(); ++step) {
            Type(step->line, here);
            Expect(QuestionAndPrompt(step->next), here);
        }
    }
};

class NumberPrompt : public RefusingPrompt {};

TEST_P(NumberPrompt, RefusesOtherNumbers) {
    Reach(prompt());
    std::vector<std::string> answers = OutOfRange(prompt());
    // "x" leaves the prompt, and so does the number that stands for it.
    for (const char* const answer : {"x", "x0", "xyz", "4294967295", "-1"})
        answers.emplace_back(answer);
    for (const std::string& answer : answers) {
        SCOPED_TRACE(answer);
        Type(answer);
        Expect(Error());
        OpenAgain();
    }
    EXPECT_EQ(CountCalls(prompt().call.method), 0U);
}

TEST_P(NumberPrompt, AsksAgainForWhatIsNoNumber) {
    Reach(prompt());
    for (const std::string answer : {"one", " x", "X", "4294967296", "-", "  ", "\t", ".5"}) {
        SCOPED_TRACE(answer);
        Type(answer);
        ExpectOutput(prompt().invalid_answer_output);
    }
    Type("");
    Expect(Prompt(prompt().id));
    ExpectNoOutput(prompt().segment);
    Type(" +" + prompt().answer + " and more");
    ExpectOutput(prompt().output);
}

TEST_P(RefusingPrompt, LooksForTheSessionBeforeItRefuses) {
    Reach(prompt());
    InSession(prompt().id) ? LoseConnection(prompt().segment) : RemoveClient(prompt().segment);
    Type(prompt().asks == Asks::kNumber ? "x" : "1G");
    Expect(prompt().lost + Prompt());
}

const auto kNumbers = [](const PromptCase&prompt) { return prompt.asks == Asks::kNumber; };
const auto kRefusing = [](const PromptCase&prompt) {
    return prompt.asks == Asks::kNumber || prompt.id == PromptId::kHandle;
};

INSTANTIATE_TEST_SUITE_P(, NumberPrompt, testing::ValuesIn(PromptCasesWith(kNumbers)),
                         NameOfPrompt);
INSTANTIATE_TEST_SUITE_P(, RefusingPrompt, testing::ValuesIn(PromptCasesWith(kRefusing)),
                         NameOfPrompt);

}  // namespace
}  // namespace morvane_test
