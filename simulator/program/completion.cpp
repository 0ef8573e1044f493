#include "simulator/program/completion.h"

#include "simulator/program/arguments.h"
#include "simulator/program/command_error.h"
#include "simulator/program/command_table.h"
#include "simulator/program/known_names.h"

#include <algorithm>
#include <iomanip>
#include <set>
#include <sstream>

namespace simulator {
namespace {

constexpr char kBlanks[] = " \t";

/// The end of the word at `from`, after its quotation mark if it is quoted.
std::size_t EndOfWord(const std::string& typed, std::size_t from) {
    if (typed[from] != '"') {
        return std::min(typed.find_first_of(kBlanks, from), typed.size());
    }
    std::size_t end = from + 1;
    while (end < typed.size() && typed[end] != '"') {
        end += typed[end] == '\\' ? 2U : 1U;
    }
    return std::min(end + 1, typed.size());
}

bool IsClosed(const std::string& word) {
    return word.size() > 1 && word.front() == '"' && word.back() == '"';
}

std::string Unquoted(const std::string& word) {
    if (IsClosed(word)) {
        std::string text;
        std::istringstream(word) >> std::quoted(text);
        return text;
    }
    return !word.empty() && word.front() == '"' ? word.substr(1) : word;
}

std::string Quoted(const std::string& word) {
    if (word.find_first_of(" \t\"\\") == std::string::npos) {
        return word;
    }
    std::ostringstream text;
    text << std::quoted(word);
    return text.str();
}

/// The complete words, at most `most`, and the offset of the rest.
struct Split {
    std::vector<std::string> words;
    std::size_t rest = 0;
};

Split SplitTyped(const std::string& typed, std::size_t most) {
    Split split;
    for (;;) {
        split.rest = std::min(typed.find_first_not_of(kBlanks, split.rest), typed.size());
        if (split.rest == typed.size() || split.words.size() == most) {
            return split;
        }
        const std::size_t end = EndOfWord(typed, split.rest);
        if (end == typed.size()) {
            return split;  // the word may be incomplete
        }
        split.words.push_back(Unquoted(typed.substr(split.rest, end - split.rest)));
        split.rest = end;
    }
}

Completion Matching(std::size_t from, const std::string& word,
                    const std::vector<std::string>& names) {
    std::set<std::string> matching;
    const std::string folded = Folded(Unquoted(word));
    for (const std::string& name : names) {
        if (Folded(name).rfind(folded, 0) == 0) {
            matching.insert(Quoted(name));
        }
    }
    return {from, {matching.begin(), matching.end()}};
}

}  // namespace

Completion CompleteCommand(Daemon& daemon, const std::string& typed) {
    Split split = SplitTyped(typed, 1);
    if (split.words.empty()) {
        return Matching(split.rest, typed.substr(split.rest), CommandNames());
    }
    try {
        bool insists = false;
        const auto kinds = KindsIn(FindCommand(split.words.front(), insists).arguments);
        split = SplitTyped(typed, kinds.size());
        split.words.erase(split.words.begin());
        if (split.words.size() >= kinds.size()) {
            return {typed.size(), {}};
        }
        const std::string word = typed.substr(split.rest);
        const std::string& kind = kinds[split.words.size()];
        return Matching(split.rest, word,
                        KnownArguments(daemon, kind, split.words, Unquoted(word)));
    } catch (const CommandError&) {
        return {typed.size(), {}};
    }
}

}  // namespace simulator
