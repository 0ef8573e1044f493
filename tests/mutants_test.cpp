// Code that changes takes a planted mistake's place away, and scripts/mutants, which would say so,
// is run rarely.

#include "support/document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace morvane_test {
namespace {

struct Mistake {
    std::string name;
    std::string file;
    std::string right;
    std::string wrong;
};

// The lines of `row` that begin with `mark`, without it.
std::string TextBehind(char mark, const std::string& row) {
    std::string text;
    for (const std::string& line : FindAll(row, std::string("\n[") + mark + "](.*)"))
        text += line + "\n";
    return text.substr(0, text.size() - std::min<std::size_t>(text.size(), 1));
}

std::vector<Mistake> PlantedMistakes() {
    std::vector<Mistake> mistakes;
    for (const std::string& row :
         FindAll(ReadSource("tests/mutants.txt"), "\n@ ([^\n]*(?:\n[-+].*)*)"))
        mistakes.push_back({row.substr(0, row.find('\n')), row.substr(0, row.find(": ")),
                            TextBehind('-', row), TextBehind('+', row)});
    return mistakes;
}

std::size_t CountPlaces(const std::string& text, const std::string& part) {
    std::size_t places = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++places;
    return places;
}

TEST(PlantedMistakesTest, HaveOnePlaceEach) {
    EXPECT_FALSE(PlantedMistakes().empty());
    for (const Mistake& mistake : PlantedMistakes()) {
        ASSERT_NE(mistake.right, "") << mistake.name;
        EXPECT_NE(mistake.right, mistake.wrong) << mistake.name;
        EXPECT_EQ(CountPlaces(ReadSource(mistake.file), mistake.right), 1U) << mistake.name;
    }
}

TEST(PlantedMistakesTest, StandInTheTableOnce) {
    std::set<std::string> names;
    std::set<std::vector<std::string>> changes;
    for (const Mistake& mistake : PlantedMistakes()) {
        EXPECT_TRUE(names.insert(mistake.name).second) << mistake.name;
        EXPECT_TRUE(changes.insert({mistake.file, mistake.right, mistake.wrong}).second)
            << mistake.name;
    }
}

}  // namespace
}  // namespace morvane_test
