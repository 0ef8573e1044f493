#include "support/messages.h"

#include <cstddef>
#include <iterator>

namespace morvane_test {
namespace {

constexpr char kTitle[] = "Vantor";
constexpr std::size_t kFrameWidth = 53;

std::string Message(const char* colour, const std::string& text) {
    return colour + text + kResetSequence;
}

// A menu is groups of lines between dashes, framed by stars.
std::string Menu(const std::vector<std::vector<std::string>>& groups) {
    std::string menu;
    for (const auto& group : groups) menu += (menu.empty() ? Stars() : Dashes()) + Lines(group);
    return menu + Stars();
}

std::string FilterMenu(const std::string& title, std::vector<std::string> keys) {
    keys.emplace_back(" d) Done");
    return Menu({{" " + title}, keys, {" h) Help"}});
}

constexpr const char* kSelectorKeys[] = {
    " i) Add all vCard Selector Fields", " j) Remove all vCard Selector Fields",
    " k) Set Single vCard Selector Field", " l) Set vCard Selector Filter",
    " u) Unset vCard Selector Filters"};

std::vector<std::string> WithSelectorKeys(std::vector<std::string> keys) {
    keys.insert(keys.end(), std::begin(kSelectorKeys), std::end(kSelectorKeys));
    return keys;
}

}  // namespace

std::string Green(const std::string& text) {
    return Message(kGreenSequence, text);
}
std::string Red(const std::string& text) {
    return Message(kRedSequence, text);
}
std::string Normal(const std::string& text) {
    return Message(kResetSequence, text);
}

std::string Prompt(const std::string& segment) {
    return Green(kTitle + segment) + Red(" > ");
}

std::string ValuePrompt(const std::string& segment) {
    return Green(kTitle + segment) + Red(" ? ");
}

std::string Notice(const std::string& segment, const std::string& text, const char* colour) {
    return "\n" + (colour + text) + kGreenSequence + kTitle + segment + Red(" > ");
}

std::string Stars() {
    return Green(std::string(kFrameWidth, '*') + "\n");
}

std::string Dashes() {
    return Green(std::string(kFrameWidth, '-') + "\n");
}

std::string Heading(const std::string& title) {
    return Stars() + Normal(" " + title + "\n") + Dashes();
}

std::string Choices(const std::vector<std::string>& choices) {
    std::string lines;
    for (std::size_t index = 0; index < choices.size(); ++index)
        lines += Normal(" " + std::to_string(index) + ") " + choices[index] + "\n");
    return lines;
}

std::string Lines(const std::vector<std::string>& texts) {
    std::string lines;
    for (const std::string& text : texts) lines += Normal(text + "\n");
    return lines;
}

std::string TextBox(const std::string& title) {
    return Stars() + Normal(" " + title + "\n") + Stars();
}

std::string Banner() {
    return Green("\n") + Stars() + Green("********************** Vantor **********************\n") +
           Stars() + Green("* Type 'help' for Menu Options, or 'quit' to Exit   *\n") + Stars() +
           Green("\n");
}

std::string MainMenu() {
    return Menu({{" c) Create Session", " r) Remove Session", " l) List Devices",
                  " u) Set OBEX User Id", " p) Set OBEX Password", " h) Help"},
                 {" q) Quit"}});
}

std::string PhonebookMenu() {
    return Menu({{" s) Select Phonebook", " a) Pull Phonebook", " p) Pull Phonebook Entry",
                  " l) List vCards in Phonebook", " o) Search Phonebook",
                  " g) Get Phonebook Size (No Filters)", " m) Get Size Phonebook",
                  " n) Get Size Listing", " u) Update Version", " f) List Filter Fields"},
                 {" h) Help"},
                 {" x) Exit this Menu", " q) Quit"}});
}

std::string TransferMenu() {
    return Menu({{" c) Cancel Download", " d) Display download file", " s) Show Status",
                  " p) Suspend transfer", " r) Resume transfer"},
                 {" h) Help"},
                 {" x) Exit this Menu", " q) Quit"}});
}

std::string PullAllFilterMenu() {
    return FilterMenu(
        "Select Optional PullAll Filters",
        WithSelectorKeys({" f) Format", " c) MaxCount", " o) Offset", " m) Reset New Missed Calls",
                          " a) Add all Filter Fields", " r) Remove all Filter Fields",
                          " s) Select Single Filter Field"}));
}

std::string PullFilterMenu() {
    return FilterMenu("Select Optional Pull Filters",
                      {" f) Format", " a) Add all Filter Fields", " r) Remove all Filter Fields",
                       " s) Select Single Filter Field"});
}

std::string ListFilterMenu() {
    return FilterMenu("Select Optional List Filters",
                      WithSelectorKeys({" r) Order", " c) MaxCount", " o) Offset",
                                        " m) Reset New Missed Calls"}));
}

std::string SizeFilterMenu() {
    return FilterMenu("Select Optional Size Filters",
                      WithSelectorKeys({" m) Reset New Missed Calls"}));
}

std::string DeviceList(const std::vector<std::string>& devices) {
    std::string lines;
    for (const std::string& device : devices) lines += Normal(" " + device + "\n");
    return Stars() + lines + Stars();
}

std::string DeviceBox(const std::vector<std::string>& devices) {
    return Heading("Select a Client") + Choices(devices) + Dashes() +
           Normal(" x) Exit this input\n") + Stars();
}

std::string OpenedSession(const std::string& address) {
    return Lines({"Session Connected", "Source Address: 02:00:5E:00:00:01",
                  "Destination Address: " + address,
                  "Target UUID: 0000112f-0000-1000-8000-00805f9b34fb", "Channel: 19",
                  "Fixed Image Size: Supported"});
}

std::string UnknownSession(const std::string& state) {
    return Lines({"Session " + state, "Source Address: Unknown", "Destination Address: Unknown",
                  "Target UUID: Unknown", "Channel: 0", "Fixed Image Size: Not Supported"});
}

}  // namespace morvane_test
