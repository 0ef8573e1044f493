#pragma once

#include <optional>
#include <string>
#include <vector>

namespace morvane_test {

// The prompts, menus and operations of the tool, for all tests. The texts are repeated here and not
// taken from the tool's tables.

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

// Frequently used prompt segments.
inline constexpr char kPhonebookMenu[] = "/Phonebook Menu";
inline constexpr char kFilterMenu[] = "/Filter Menu";
inline constexpr char kTransferMenu[] = "/Transfer Menu";

enum class Asks { kKey, kNumber, kText };

/// Where an accepted answer leads.
enum class Move {
    kStay,   ///< to the same menu
    kEnter,  ///< to `next`, which returns to the same menu
    kGo,     ///< to `next`, which replaces this prompt
    kLeave,  ///< to the parent menu
    kQuit,
};

struct PromptRow {
    PromptId id;
    std::string name;     ///< name of the prompt in test names
    std::string segment;  ///< text after the tool's title in the prompt
    Asks asks;
    std::string title;   ///< title of the question or menu; may be empty
    std::string answer;  ///< a valid answer
    Move move = Move::kStay;
    PromptId next = {};
    std::string error = {};                 ///< message for an invalid number
    std::vector<std::string> choices = {};  ///< numbered choices
    unsigned smallest = 0;                  ///< first valid number
    unsigned limit = 0;                     ///< first invalid number; maximum length of a text
};

const std::vector<PromptRow>& Prompts();
const PromptRow& RowOf(PromptId id);

struct KeyRow {
    std::vector<PromptId> menus;
    char key;
    std::string text;
    unsigned weight;  ///< relative frequency in random conversations
    Move move = Move::kStay;
    PromptId next = {};
    bool needs_selection = false;  ///< refused unless a phone book is selected
};

/// The keys of a menu, in display order.
std::vector<KeyRow> KeysOf(PromptId menu);
/// The output of the menu's "h".
std::string MenuOf(PromptId menu);

std::string Prompt(PromptId id);
/// The output when the tool opens this prompt, up to and including the prompt. The fields of
/// filters are FilterFields().
std::string QuestionAndPrompt(PromptId id);

struct Answer {
    PromptId at;
    std::string line;
    PromptId next;
};

/// Shortest sequence of answers to a prompt: from the phone book menu for prompts in a session,
/// else from the main menu.
std::vector<Answer> PathTo(PromptId id);
/// The menu that opens the prompt, and to which the tool returns from it.
PromptId MenuAbove(PromptId id);
bool InSession(PromptId id);
/// Whether a phone book must be selected first. Only for prompts in a session.
bool NeedsSelection(PromptId id);

/// A key of the phone book menu that calls a method.
struct Operation {
    std::string method;
    std::vector<std::string> lines;  ///< typed in the phone book menu, up to the filter menu
    std::optional<PromptId> filters;
    std::string arguments;  ///< arguments of the call without filters
    std::string reply_type;
    std::string reply;   ///< a valid reply
    std::string result;  ///< output for that reply

    /// `lines`, followed by "d" for the filter menu if there is one.
    [[nodiscard]] std::vector<std::string> AllLines() const;
};

const std::vector<Operation>& Operations();
const Operation& OperationOf(const std::string& method);
/// Operations with a filter menu.
std::vector<Operation> FilteredOperations();

/// The fields that `ListFilterFields` returns, and its reply as GVariant text.
const std::vector<std::string>& FilterFields();
std::string FilterFieldsReply(const std::vector<std::string>& fields = FilterFields());

}  // namespace morvane_test
