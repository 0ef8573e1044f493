#include "play/pattern.h"

#include "play/prompt.h"
#include "play/text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace play {
namespace {

constexpr std::string_view kWildcard = "[..]";

std::size_t CountBackslashes(std::string_view text) {
    return std::min(text.find_first_not_of('\\'), text.size());
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

// Backslashes escape a wildcard, and each other before one; elsewhere they are ordinary.
bool EscapesWildcard(std::string_view text) {
    return StartsWith(text.substr(CountBackslashes(text)), kWildcard);
}

// The escape for a line that would not be read as output, or nothing.
std::string_view Prefix(std::string_view line) {
    const bool escaped = StartsWith(line, "#") || StartsWith(line, "%") || StartsWith(line, "$ ") ||
                         (StartsWith(line, "\\") && !EscapesWildcard(line)) || line == "..." ||
                         StartsWith(line, kByteOrderMark) ||
                         PromptLength(std::string(line) + " ") > 0;
    return escaped ? "\\" : "";
}

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

bool IsLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

/// Text that differs between runs and is replaced by a wildcard, except for its first `kept` bytes.
/// In `shape`, X matches a hexadecimal digit, 9 a digit, + further digits, any other byte itself.
struct Variable {
    std::string_view shape;
    std::size_t kept;
};

constexpr std::array<Variable, 6> kVariables = {{
    {"dev_XX_XX_XX_XX_XX_XX", 4},
    {"XX:XX:XX:XX:XX:XX", 0},
    {"/session9+", 8},
    {"/transfer9+", 9},
    {"99999999T999999Z", 0},
    {"99999999T999999", 0},
}};

/// Labels of file paths. The directory of the path differs between runs.
constexpr std::array<std::string_view, 3> kPathLabels = {
    "Filename: ", "Displaying: ", "Removing: "};

bool FitsShape(char shape, char byte) {
    if (shape == 'X') {
        return IsDigit(byte) || (byte != '\0' && std::strchr("abcdefABCDEF", byte) != nullptr);
    }
    return shape == '9' ? IsDigit(byte) : shape == byte;
}

// The length of the match at the beginning of `text`, or 0.
std::size_t MatchShape(std::string_view shape, std::string_view text) {
    std::size_t length = 0;
    for (const char wanted : shape) {
        if (wanted == '+') {
            while (length < text.size() && IsDigit(text[length])) {
                ++length;
            }
        } else if (length < text.size() && FitsShape(wanted, text[length])) {
            ++length;
        } else {
            return 0;
        }
    }
    const bool goes_on = length < text.size() && (IsDigit(text[length]) || IsLetter(text[length]));
    return goes_on ? 0 : length;
}

struct Found {
    std::size_t length;
    std::size_t kept;
};

Found FindVariable(std::string_view line, std::size_t position) {
    const bool inside_word =
        position > 0 && (IsDigit(line[position - 1]) || IsLetter(line[position - 1]));
    for (const Variable& variable : kVariables) {
        const std::size_t length = MatchShape(variable.shape, line.substr(position));
        if (length > 0 && (!inside_word || variable.shape.front() == '/')) {
            return {length, variable.kept};
        }
    }
    return {0, 0};
}

// The label of a path, which is kept, and the directory after it.
Found FindDirectory(std::string_view line) {
    for (const std::string_view label : kPathLabels) {
        const std::size_t slash = line.rfind('/');
        if (StartsWith(line, label) && slash != std::string_view::npos && slash > label.size()) {
            return {slash, label.size()};
        }
    }
    return {0, 0};
}

std::string EscapeWildcards(std::string_view line) {
    std::string written;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (EscapesWildcard(line.substr(i)) && line[i] == '\\') {
            written += "\\\\";
        } else if (EscapesWildcard(line.substr(i))) {
            written += "\\[";
        } else {
            written += line[i];
        }
    }
    return written;
}

}  // namespace

Pattern::Pattern(std::string_view written) : parts_(1) {
    written = WithoutTrailingBlanks(written);
    if (StartsWith(written, "\\") && !EscapesWildcard(written)) {
        written.remove_prefix(1);
    }
    while (!written.empty()) {
        const std::size_t backslashes = CountBackslashes(written);
        if (!EscapesWildcard(written)) {
            const std::size_t plain = std::max<std::size_t>(backslashes, 1);
            parts_.back() += written.substr(0, plain);
            written.remove_prefix(plain);
            continue;
        }
        parts_.back().append(backslashes / 2, '\\');
        written.remove_prefix(backslashes + kWildcard.size());
        if (backslashes % 2 == 1) {
            parts_.back() += kWildcard;
        } else {
            parts_.emplace_back();
        }
    }
}

bool Pattern::Matches(std::string_view line) const {
    line = WithoutTrailingBlanks(line);
    const std::string& first = parts_.front();
    const std::string& last = parts_.back();
    if (parts_.size() == 1) {
        return line == first;
    }
    if (line.size() < first.size() + last.size() || !StartsWith(line, first) ||
        line.substr(line.size() - last.size()) != last) {
        return false;
    }
    line.remove_prefix(first.size());
    line.remove_suffix(last.size());
    for (std::size_t i = 1; i + 1 < parts_.size(); ++i) {
        const std::size_t found = line.find(parts_[i]);
        if (found == std::string_view::npos) {
            return false;
        }
        line.remove_prefix(found + parts_[i].size());
    }
    return true;
}

std::string WriteLiteral(std::string_view line) {
    line = WithoutTrailingBlanks(line);
    return std::string(Prefix(line)) + EscapeWildcards(line);
}

std::string WriteGeneral(std::string_view line) {
    line = WithoutTrailingBlanks(line);
    std::string written(Prefix(line));
    std::size_t begin = 0;  // offset of the text not yet written
    if (const Found directory = FindDirectory(line); directory.length > 0) {
        written += line.substr(0, directory.kept);
        written += kWildcard;
        begin = directory.length;
    }
    for (std::size_t i = begin; i < line.size();) {
        const Found found = FindVariable(line, i);
        if (found.length == 0) {
            ++i;
            continue;
        }
        written += EscapeWildcards(line.substr(begin, i + found.kept - begin));
        written += kWildcard;
        i += found.length;
        begin = i;
    }
    return written + EscapeWildcards(line.substr(begin));
}

}  // namespace play
