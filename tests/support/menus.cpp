#include "support/menus.h"

#include "support/messages.h"
#include "support/value.h"

#include <algorithm>
#include <iterator>

namespace morvane_test {
namespace {

using Id = PromptId;
using Texts = std::vector<std::string>;

PromptRow Menu(Id id, const std::string& name, const std::string& segment,
               const std::string& answer, const std::string& title = "") {
    return {id, name, segment, Asks::kKey, title, answer};
}

PromptRow FilterMenu(Id id, const std::string& name, const std::string& what) {
    return Menu(id, name, kFilterMenu, "d", "Select Optional " + what + " Filters");
}

PromptRow Text(Id id, const std::string& name, const std::string& segment, const std::string& title,
               const std::string& answer, unsigned limit) {
    return {id, name, segment, Asks::kText, title, answer, Move::kLeave, {}, "", {}, 0, limit};
}

PromptRow Choice(Id id, const std::string& name, const std::string& segment,
                 const std::string& title, const Texts& choices, const std::string& error) {
    PromptRow row = {id, name, segment, Asks::kNumber, title, "0", Move::kLeave};
    row.error = error;
    row.choices = choices;
    row.limit = static_cast<unsigned>(choices.size());
    return row;
}

// A 16-bit number.
PromptRow Number(Id id, const std::string& name, const std::string& title, unsigned smallest) {
    PromptRow row = {id, name, "/" + name, Asks::kNumber, title, "5", Move::kLeave};
    row.error = "Invalid " + name + " entered";
    row.smallest = smallest;
    row.limit = 65536;
    return row;
}

PromptRow LeadingTo(Id next, PromptRow row) {
    row.move = Move::kGo;
    row.next = next;
    return row;
}

std::vector<PromptRow> MakePrompts() {
    return {
        Menu(Id::kMain, "MainMenu", "", "l"),
        LeadingTo(Id::kPhonebookMenu,
                  Choice(Id::kDevice, "DeviceChoice", "/Select Device", "Select a Client",
                         {"00:1B:DC:07:31:9A | Workbench Phone"}, "Invalid Client selected")),
        Text(Id::kUserId, "UserId", "/User Id", "Enter OBEX User Id (Max 20 chars)", "me", 20),
        Text(Id::kPassword, "Password", "/Password", "Enter OBEX Password (Max 10 chars)", "secret",
             10),
        Menu(Id::kPhonebookMenu, "ProfileMenu", kPhonebookMenu, "u"),
        LeadingTo(Id::kPhonebook, Choice(Id::kLocation, "Location", "/Select Location",
                                         "Select a Phonebook Location", {"int", "sim1", "sim2"},
                                         "Invalid location selected")),
        Choice(Id::kPhonebook, "PhoneBook", "/Select Phonebook", "Select a Phonebook",
               {"pb", "cch", "ich", "och", "mch", "spd", "fav"}, "Invalid phone book selected"),
        LeadingTo(Id::kPullFilters, Text(Id::kHandle, "Handle", "/vCard Handle", "", "1", 41)),
        FilterMenu(Id::kPullAllFilters, "PullAllFilters", "PullAll"),
        FilterMenu(Id::kPullFilters, "PullFilters", "Pull"),
        FilterMenu(Id::kListFilters, "ListFilters", "List"),
        FilterMenu(Id::kSearchFilters, "SearchFilters", "List"),
        FilterMenu(Id::kSizeFilters, "SizeFilters", "Size"),
        FilterMenu(Id::kListSizeFilters, "ListSizeFilters", "Size"),
        Choice(Id::kFormat, "Format", "/Select Format", "Select a Phonebook Format",
               {"vcard21", "vcard30"}, "Invalid format selected"),
        Choice(Id::kOrder, "Order", "/Select Order", "Select a Phonebook Sort Order",
               {"indexed", "alphanumeric", "phonetic"}, "Invalid order selected"),
        Choice(Id::kField, "Field", "/Select Filter Field", "Select a Filter Field", FilterFields(),
               "Invalid filter selected"),
        Choice(Id::kSelectorFilter, "Selector", "/Select vCard Selector Filter",
               "Select a vCard Selector Filter", {"FilterAll", "FilterAny"},
               "Invalid vCard selector selected"),
        Number(Id::kMaxCount, "MaxCount", "Enter number of Phonebook Entries to return", 1),
        Number(Id::kOffset, "Offset", "Enter the Phonebook List Start Offset", 0),
        LeadingTo(Id::kSearchValue, Choice(Id::kSearchField, "SearchField", "/Select Search Field",
                                           "Select Search Field", {"name", "number", "sound"},
                                           "Invalid search field selected")),
        LeadingTo(Id::kSearchFilters, Text(Id::kSearchValue, "SearchValue", "/Search Value",
                                           "Enter search value string", "Ada", 63)),
        Menu(Id::kTransfer, "TransferMenu", kTransferMenu, "s"),
        Menu(Id::kCancelledTransfer, "CancelledTransfer", kTransferMenu, "x"),
    };
}

using Menus = std::vector<Id>;

const std::vector<KeyRow>& Keys() {
    constexpr char kDashes = 0;
    const Menus main = {Id::kMain};
    const Menus phonebook = {Id::kPhonebookMenu};
    const Menus transfer = {Id::kTransfer};
    const Menus in_session = {Id::kPhonebookMenu, Id::kTransfer};
    // PathTo() uses the first menu of each list.
    const Menus pulls = {Id::kPullAllFilters, Id::kPullFilters};
    const Menus listings = {Id::kListFilters, Id::kSearchFilters};
    const Menus queries = {Id::kListFilters, Id::kSearchFilters, Id::kSizeFilters,
                           Id::kListSizeFilters};
    const Menus ranges = {Id::kListFilters, Id::kPullAllFilters, Id::kSearchFilters};
    const Menus selections = {Id::kSizeFilters, Id::kPullAllFilters, Id::kListFilters,
                              Id::kSearchFilters, Id::kListSizeFilters};
    const Menus filters = {Id::kPullAllFilters, Id::kPullFilters, Id::kListFilters,
                           Id::kSearchFilters,  Id::kSizeFilters, Id::kListSizeFilters};
    static const std::vector<KeyRow> keys = {
        {main, 'c', "Create Session", 40, Move::kEnter, Id::kDevice},
        {main, 'r', "Remove Session", 4},
        {main, 'l', "List Devices", 4},
        {main, 'u', "Set OBEX User Id", 5, Move::kEnter, Id::kUserId},
        {main, 'p', "Set OBEX Password", 5, Move::kEnter, Id::kPassword},
        {main, 'h', "Help", 2},
        {main, kDashes, "", 0},
        {main, 'q', "Quit", 0, Move::kQuit},

        {phonebook, 's', "Select Phonebook", 12, Move::kEnter, Id::kLocation},
        {phonebook, 'a', "Pull Phonebook", 16, Move::kEnter, Id::kPullAllFilters, true},
        {phonebook, 'p', "Pull Phonebook Entry", 16, Move::kEnter, Id::kHandle, true},
        {phonebook, 'l', "List vCards in Phonebook", 8, Move::kEnter, Id::kListFilters, true},
        {phonebook, 'o', "Search Phonebook", 10, Move::kEnter, Id::kSearchField, true},
        {phonebook, 'g', "Get Phonebook Size (No Filters)", 5, Move::kStay, {}, true},
        {phonebook, 'm', "Get Size Phonebook", 6, Move::kEnter, Id::kSizeFilters, true},
        {phonebook, 'n', "Get Size Listing", 6, Move::kEnter, Id::kListSizeFilters, true},
        {phonebook, 'u', "Update Version", 3},
        {phonebook, 'f', "List Filter Fields", 3},

        {pulls, 'f', "Format", 5, Move::kEnter, Id::kFormat},
        {listings, 'r', "Order", 5, Move::kEnter, Id::kOrder},
        {ranges, 'c', "MaxCount", 5, Move::kEnter, Id::kMaxCount},
        {ranges, 'o', "Offset", 5, Move::kEnter, Id::kOffset},
        {selections, 'm', "Reset New Missed Calls", 2},
        {pulls, 'a', "Add all Filter Fields", 3},
        {pulls, 'r', "Remove all Filter Fields", 2},
        {pulls, 's', "Select Single Filter Field", 4, Move::kEnter, Id::kField},
        {selections, 'i', "Add all vCard Selector Fields", 2},
        {selections, 'j', "Remove all vCard Selector Fields", 2},
        {selections, 'k', "Set Single vCard Selector Field", 4, Move::kEnter, Id::kField},
        {selections, 'l', "Set vCard Selector Filter", 4, Move::kEnter, Id::kSelectorFilter},
        {selections, 'u', "Unset vCard Selector Filters", 2},
        {pulls, 'd', "Done", 18, Move::kGo, Id::kTransfer},
        {queries, 'd', "Done", 14, Move::kLeave},
        {filters, kDashes, "", 0},
        {filters, 'h', "Help", 1},

        {transfer, 'c', "Cancel Download", 5, Move::kGo, Id::kCancelledTransfer},
        {transfer, 'd', "Display download file", 8},
        {transfer, 's', "Show Status", 6},
        {transfer, 'p', "Suspend transfer", 5},
        {transfer, 'r', "Resume transfer", 5},
        {in_session, kDashes, "", 0},
        {in_session, 'h', "Help", 1},
        {in_session, kDashes, "", 0},
        {in_session, 'x', "Exit this Menu", 4, Move::kLeave},
        {in_session, 'q', "Quit", 0, Move::kQuit},
        {{Id::kCancelledTransfer}, 'x', "", 1, Move::kLeave},
    };
    return keys;
}

// Includes the lines of dashes, which have no key.
std::vector<KeyRow> LinesOf(Id menu) {
    std::vector<KeyRow> lines;
    std::copy_if(Keys().begin(), Keys().end(), std::back_inserter(lines),
                 [menu](const KeyRow& row) {
                     return std::find(row.menus.begin(), row.menus.end(), menu) != row.menus.end();
                 });
    return lines;
}

std::string Question(const PromptRow& row) {
    if (row.id == Id::kDevice) return DeviceBox(row.choices);
    if (row.id == Id::kHandle) return Heading("Enter handle of vCard to download") + TextBox("");
    if (row.asks == Asks::kText) return TextBox(row.title);
    if (row.asks == Asks::kNumber) return Heading(row.title) + Choices(row.choices);
    return row.segment == kFilterMenu ? MenuOf(row.id) : "";
}

Operation Calling(const std::string& method, const Texts& lines, std::optional<Id> filters,
                  const std::string& arguments, const std::string& reply,
                  const std::string& result) {
    return {method, lines, filters, arguments, g_variant_get_type_string(Value(reply)),
            reply,  result};
}

std::vector<Operation> MakeOperations() {
    const std::string no_filters = "(@a{sv} {},)";
    const std::string transfer = "(objectpath '/t/1', {'Status': <'queued'>, 'Size': <uint64 5>})";
    const std::string transfer_lines = Lines({"Status: queued", "Size: 5"});
    const std::string found = "([('1.vcf', 'Ada')],)";
    const std::string listing = Heading("vCard Listing") + Lines({" 1.vcf\tAda"});
    return {
        Calling("PullAll", {"a"}, Id::kPullAllFilters, "('/tmp/phonebook.vcf', @a{sv} {})",
                transfer, transfer_lines),
        Calling("Pull", {"p", "1"}, Id::kPullFilters, "('1.vcf', '/tmp/card.vcf', @a{sv} {})",
                transfer, transfer_lines),
        Calling("List", {"l"}, Id::kListFilters, no_filters, found, listing),
        Calling("Search", {"o", "0", "Ada"}, Id::kSearchFilters, "('name', 'Ada', @a{sv} {})",
                found, listing),
        Calling("GetSize", {"g"}, {}, "()", "(uint16 42,)", Lines({"Phonebook Size 42"})),
        Calling("GetSizePhonebook", {"m"}, Id::kSizeFilters, no_filters, "(uint16 7,)",
                Lines({"Phone Book Size 7"})),
        Calling("GetSizeListing", {"n"}, Id::kListSizeFilters, no_filters, "(uint16 8,)",
                Lines({"vCard List Size 8"})),
        Calling("UpdateVersion", {"u"}, {}, "()", "()", Lines({"Counters updated"})),
        Calling("ListFilterFields", {"f"}, {}, "()", "(['TEL', 'N', 'TEL'],)",
                Heading("Filter Fields") + Lines({" TEL", " N", " TEL"})),
        Calling("Select", {"s", "0", "0"}, {}, "('int', 'pb')", "()",
                Lines({"Phonebook selected successfully"})),
    };
}

}  // namespace

const std::vector<PromptRow>& Prompts() {
    static const std::vector<PromptRow> prompts = MakePrompts();
    return prompts;
}

const PromptRow& RowOf(PromptId id) {
    return *std::find_if(Prompts().begin(), Prompts().end(),
                         [id](const PromptRow& row) { return row.id == id; });
}

std::vector<KeyRow> KeysOf(PromptId menu) {
    std::vector<KeyRow> keys = LinesOf(menu);
    const auto has_no_key = [](const KeyRow& row) { return row.key == 0; };
    keys.erase(std::remove_if(keys.begin(), keys.end(), has_no_key), keys.end());
    return keys;
}

std::string MenuOf(PromptId menu) {
    const std::string& title = RowOf(menu).title;
    std::string text = title.empty() ? Stars() : Heading(title);
    for (const KeyRow& row : LinesOf(menu))
        text += row.key == 0 ? Dashes() : Lines({std::string(" ") + row.key + ") " + row.text});
    return text + Stars();
}

std::string Prompt(PromptId id) {
    const PromptRow& row = RowOf(id);
    return row.asks == Asks::kKey ? Prompt(row.segment) : ValuePrompt(row.segment);
}

std::string QuestionAndPrompt(PromptId id) {
    return Question(RowOf(id)) + Prompt(id);
}

std::vector<Answer> PathTo(PromptId id) {
    if (id == Id::kMain || id == Id::kPhonebookMenu) return {};
    Answer last = {Id::kMain, "", id};
    for (const KeyRow& row : Keys())
        if (row.next == id && last.line.empty()) last = {row.menus.front(), {row.key}, id};
    for (const PromptRow& row : Prompts())
        if (row.next == id && last.line.empty()) last = {row.id, row.answer, id};
    std::vector<Answer> way = PathTo(last.at);
    way.push_back(last);
    return way;
}

PromptId MenuAbove(PromptId id) {
    const std::vector<Answer> way = PathTo(id);
    const auto from_menu = std::find_if(way.rbegin(), way.rend(), [](const Answer& answer) {
        return RowOf(answer.at).asks == Asks::kKey;
    });
    return from_menu->at;
}

bool InSession(PromptId id) {
    const std::vector<Answer> way = PathTo(id);
    return (way.empty() ? id : way.front().at) == Id::kPhonebookMenu;
}

bool NeedsSelection(PromptId id) {
    const std::vector<Answer> way = PathTo(id);
    if (way.empty()) return false;
    const std::vector<KeyRow> keys = KeysOf(way.front().at);
    return std::any_of(keys.begin(), keys.end(), [&](const KeyRow& row) {
        return row.needs_selection && way.front().line[0] == row.key;
    });
}

std::vector<std::string> Operation::AllLines() const {
    std::vector<std::string> all = lines;
    if (filters) all.emplace_back("d");
    return all;
}

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = MakeOperations();
    return operations;
}

const Operation& OperationOf(const std::string& method) {
    return *std::find_if(Operations().begin(), Operations().end(),
                         [&](const Operation& operation) { return operation.method == method; });
}

std::vector<Operation> FilteredOperations() {
    std::vector<Operation> filtered;
    std::copy_if(Operations().begin(), Operations().end(), std::back_inserter(filtered),
                 [](const Operation& operation) { return operation.filters.has_value(); });
    return filtered;
}

const std::vector<std::string>& FilterFields() {
    static const Texts fields = {"VERSION", "FN",  "N",     "PHOTO",  "BDAY", "ADR",
                                 "LABEL",   "TEL", "EMAIL", "MAILER", "100%s"};
    return fields;
}

std::string FilterFieldsReply(const std::vector<std::string>& fields) {
    std::string reply = "(@as [";
    for (const std::string& field : fields)
        reply += (reply.back() == '[' ? "'" : ", '") + field + "'";
    return reply + "],)";
}

}  // namespace morvane_test
