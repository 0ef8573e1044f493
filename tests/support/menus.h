#pragma once

#include <optional>
#include <string>
#include <vector>

namespace morvane_test {

// What the tool asks its operator, described once for all tests. The texts are the tests' own: none
// is taken from the tool's tables.

enum class PromptId {
    kMain,
    kDevice,
    kUserId,
    kPassword,
    kPhonebookMenu,
    kLocation,
    kPhonebook,
    kHandle,
    kPullAllFilters,
    kPullFilters,
    kListFilters,
    kSearchFilters,
    kSizeFilters,
    kListSizeFilters,
    kFormat,
    kOrder,
    kField,
    kSelectorFilter,
    kMaxCount,
    kOffset,
    kSearchField,
    kSearchValue,
    kTransfer,
    kCancelledTransfer,  ///< the transfer menu after "c": the next key leaves it
};

// The segments of the prompts that are named most.
inline constexpr char kPhonebookMenu[] = "/Phonebook Menu";
inline constexpr char kFilterMenu[] = "/Filter Menu";
inline constexpr char kTransferMenu[] = "/Transfer Menu";

enum class Asks { kKey, kNumber, kText };

/// What follows an accepted answer.
enum class Move {
    kStay,   ///< the same menu
    kEnter,  ///< `next`, and the same menu after it
    kGo,     ///< `next` in place of this prompt
    kLeave,  ///< the menu above
    kQuit,
};

struct PromptRow {
    PromptId id;
    std::string name;     ///< in the names of tests
    std::string segment;  ///< what follows the tool's title in the prompt
    Asks asks;
    std::string title;   ///< of the question, or of the menu; may be empty
    std::string answer;  ///< one that is accepted
    Move move = Move::kStay;
    PromptId next = {};
    std::string error = {};                 ///< displayed when a number is refused
    std::vector<std::string> choices = {};  ///< of a number
    unsigned smallest = 0;                  ///< the first valid number
    unsigned past = 0;                      ///< the number after the last valid one; a text's limit
};

const std::vector<PromptRow>& Prompts();
const PromptRow& RowOf(PromptId id);

struct KeyRow {
    std::vector<PromptId> menus;
    char key;
    std::string text;
    unsigned weight;  ///< in random conversations
    Move move = Move::kStay;
    PromptId next = {};
    bool needs_selection = false;  ///< refused unless a phone book is selected
};

/// In the order in which the menu displays them.
std::vector<KeyRow> KeysOf(PromptId menu);
/// What the menu's "h" prints.
std::string MenuOf(PromptId menu);

std::string Prompt(PromptId id);
/// What is displayed when the tool gets to this prompt, up to and including it. The field of a
/// filter is chosen from FilterFields().
std::string Asking(PromptId id);

struct Answer {
    PromptId at;
    std::string line;
    PromptId next;
};

/// The shortest way to a prompt: in a session from the phone book menu, else from the main menu.
std::vector<Answer> WayTo(PromptId id);
/// The menu from which that way opens the prompt, and which asks again after it.
PromptId MenuAbove(PromptId id);
bool InSession(PromptId id);
/// Of a prompt in a session.
bool NeedsSelection(PromptId id);

/// One of the phone book menu's keys, up to its call.
struct Operation {
    std::string method;
    std::vector<std::string> lines;  ///< typed from the phone book menu on, up to the filter menu
    std::optional<PromptId> filters;
    std::string arguments;  ///< without filters
    std::string reply_type;
    std::string reply;   ///< one that is possible
    std::string result;  ///< displayed after that

    /// `lines`, and "d" in the filter menu.
    [[nodiscard]] std::vector<std::string> AllLines() const;
};

const std::vector<Operation>& Operations();
const Operation& OperationOf(const std::string& method);
/// Those with a filter menu.
std::vector<Operation> FilteredOperations();

/// What `ListFilterFields` replies, and the reply.
const std::vector<std::string>& FilterFields();
std::string FilterFieldsReply(const std::vector<std::string>& fields = FilterFields());

}  // namespace morvane_test
