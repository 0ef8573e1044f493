#include "robustness/places.h"

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
    std::vector<unsigned> numbers = {row.past, row.past + 1, 4294967294, 65536 + row.smallest,
                                     kMultipleOf16Bits + row.smallest};
    if (row.smallest > 0) numbers.push_back(row.smallest - 1);
    std::vector<std::string> answers;
    for (const unsigned number : numbers) answers.push_back(std::to_string(number));
    return answers;
}

class RefusingPrompt : public EachPlaceTest {
  protected:
    std::string Error() const { return Red(place().error + "\n") + Prompt(MenuAbove(place().id)); }

    // From the menu above, with each question on the way.
    void OpenAgain(Here here = Here::Now()) {
        const std::vector<Answer>& way = place().opening;
        auto step = std::find_if(way.begin(), way.end(), [](const Answer& answer) {
            return answer.at == MenuAbove(place().id);
        });
        for (; step != way.end(); ++step) {
            Type(step->line, here);
            Expect(Asking(step->next), here);
        }
    }
};

class NumberPrompt : public RefusingPrompt {};

TEST_P(NumberPrompt, RefusesOtherNumbers) {
    Reach(place());
    std::vector<std::string> answers = OutOfRange(place());
    // "x" leaves the prompt, and so does the number that stands for it.
    for (const char* const answer : {"x", "x0", "xyz", "4294967295", "-1"})
        answers.emplace_back(answer);
    for (const std::string& answer : answers) {
        SCOPED_TRACE(answer);
        Type(answer);
        Expect(Error());
        OpenAgain();
    }
    EXPECT_EQ(CountCalls(place().call.method), 0U);
}

TEST_P(NumberPrompt, AsksAgainForWhatIsNoNumber) {
    Reach(place());
    for (const std::string answer : {"one", " x", "X", "4294967296", "-", "  ", "\t", ".5"}) {
        SCOPED_TRACE(answer);
        Type(answer);
        ExpectOutput(place().nonsense);
    }
    Type("");
    Expect(Prompt(place().id));
    ExpectQuiet(place().segment);
    Type(" +" + place().answer + " and more");
    ExpectOutput(place().output);
}

TEST_P(RefusingPrompt, LooksForTheSessionBeforeItRefuses) {
    Reach(place());
    InSession(place().id) ? LoseConnection(place().segment) : RemoveClient(place().segment);
    Type(place().asks == Asks::kNumber ? "x" : "1G");
    Expect(place().lost + Prompt());
}

const auto kNumbers = [](const Place& place) { return place.asks == Asks::kNumber; };
const auto kRefusing = [](const Place& place) {
    return place.asks == Asks::kNumber || place.id == PromptId::kHandle;
};

INSTANTIATE_TEST_SUITE_P(, NumberPrompt, testing::ValuesIn(PlacesThat(kNumbers)), NameOfPlace);
INSTANTIATE_TEST_SUITE_P(, RefusingPrompt, testing::ValuesIn(PlacesThat(kRefusing)), NameOfPlace);

}  // namespace
}  // namespace morvane_test
