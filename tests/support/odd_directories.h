#pragma once

namespace morvane_test {

/// A directory name that must be escaped in some contexts, or makes a path too long for a socket.
struct OddDirectory {
    const char* test;
    const char* name;
};

constexpr OddDirectory kOddDirectories[] = {
    {"Blank", "a b"},
    {"Percent", "100%41%"},
    {"Quotes", "it's \"quoted\""},
    {"Separators", "a;b,c=d"},
    {"Markup", "a&b<c>"},
    {"Pattern", "a\\b*[c]?"},
    {"NonAscii", "Zo\u00eb"},
    {"TooLongForSocket",
     "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890"},
};

}  // namespace morvane_test
