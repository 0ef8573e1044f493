#include "console/number.h"

#include <algorithm>
#include <charconv>

namespace morvane {
namespace {

bool SkipOne(std::string_view& text, char character) {
    const bool there = !text.empty() && text.front() == character;
    if (there) {
        text.remove_prefix(1);
    }
    return there;
}

bool BeginsWithHexPrefix(std::string_view text) {
    return text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

std::string_view SkipBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    return text;
}

std::optional<unsigned int> ParseNumber(std::string_view text, int base) {
    text = SkipBlanks(text);
    const bool negative = SkipOne(text, '-');
    if (!negative) {
        SkipOne(text, '+');
    }
    if (base == 16 && BeginsWithHexPrefix(text)) {
        text.remove_prefix(2);
    }
    unsigned int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    return negative ? 0U - number : number;
}

}  // namespace morvane
