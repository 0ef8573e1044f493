#include "console/number.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <optional>
#include <random>
#include <sstream>
#include <string>

namespace morvane {
namespace {

// Reference: std::istream.
std::optional<unsigned int> ReadByStream(const std::string& text, int base) {
    std::istringstream stream(text);
    unsigned int number = 0;
    stream >> std::setbase(base) >> number;
    return stream ? std::optional(number) : std::nullopt;
}

void ExpectSameAsStream(const std::string& text) {
    for (const int base : {10, 16}) {
        EXPECT_EQ(ParseNumber(text, base), ReadByStream(text, base))
            << "base " << base << ": " << testing::PrintToString(text);
    }
}

// Texts that the random test does not generate.
TEST(NumberTest, ReadsLimitsAndOddCharactersLikeAStream) {
    for (const char* const text :
         {"0x0x1", "0x00x1", " \t\n\v\f\r7", "\b7", "\xC2\xA0 7", "4294967295", "4294967296",
          "-4294967295", "-4294967296", "ffffffff", "100000000", "-ffffffff",
          "00000000000000000000000000001", "0b1"})
        ExpectSameAsStream(text);
}

TEST(NumberTest, ReadsRandomTextsLikeAStream) {
    const std::string alphabet("0019afFxX+- \t,.g\0", 17);
    std::mt19937 random(20);
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<std::size_t> length(0, 13);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        std::string text(length(random), ' ');
        for (char& character : text) character = alphabet[letter(random)];
        ExpectSameAsStream(text);
    }
}

}  // namespace
}  // namespace morvane
