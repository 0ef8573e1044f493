#include "sessions/operator_lines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace morvane_test {
namespace {

enum class Kind { kMenu, kNumber, kText };

/// How the tool goes on after an answer that it accepts.
enum class Move {
    kStay,   ///< the same menu asks again
    kEnter,  ///< `next` asks, and the same menu afterwards
    kGo,     ///< `next` asks in its place
    kLeave,  ///< the menu above asks
};

struct PlaceRow {
    Place place;
    const char* segment;
    Kind kind;
    // Of a number: the smallest that is valid, and the first one past them. Of a text: past is the
    // length of the longest.
    unsigned smallest;
    unsigned past;
    Move move;
    Place next;
};

constexpr unsigned kFields = 32;

constexpr PlaceRow kPlaces[] = {
    {Place::kMain, "", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kDevice, "/Select Device", Kind::kNumber, 0, 3, Move::kGo, Place::kProfile},
    {Place::kUserId, "/User Id", Kind::kText, 0, 20, Move::kLeave, {}},
    {Place::kPassword, "/Password", Kind::kText, 0, 10, Move::kLeave, {}},
    {Place::kProfile, "/Phonebook Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kLocation, "/Select Location", Kind::kNumber, 0, 3, Move::kGo, Place::kPhonebook},
    {Place::kPhonebook, "/Select Phonebook", Kind::kNumber, 0, 5, Move::kLeave, {}},
    {Place::kSearchField, "/Select Search Field", Kind::kNumber, 0, 3, Move::kGo,
     Place::kSearchValue},
    {Place::kSearchValue, "/Search Value", Kind::kText, 0, 63, Move::kGo, Place::kListFilter},
    {Place::kHandle, "/vCard Handle", Kind::kText, 0, 41, Move::kGo, Place::kPullFilter},
    {Place::kPullAllFilter, "/Filter Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kPullFilter, "/Filter Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kListFilter, "/Filter Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kSizeFilter, "/Filter Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kFormat, "/Select Format", Kind::kNumber, 0, 2, Move::kLeave, {}},
    {Place::kOrder, "/Select Order", Kind::kNumber, 0, 3, Move::kLeave, {}},
    {Place::kMaxCount, "/MaxCount", Kind::kNumber, 1, 65536, Move::kLeave, {}},
    {Place::kOffset, "/Offset", Kind::kNumber, 0, 65536, Move::kLeave, {}},
    {Place::kField, "/Select Filter Field", Kind::kNumber, 0, kFields, Move::kLeave, {}},
    {Place::kSelectorFilter,
     "/Select vCard Selector Filter",
     Kind::kNumber,
     0,
     2,
     Move::kLeave,
     {}},
    {Place::kTransfer, "/Transfer Menu", Kind::kMenu, 0, 0, Move::kStay, {}},
    {Place::kCancelled, "/Transfer Menu", Kind::kMenu, 0, 0, Move::kLeave, {}},
};

struct KeyRow {
    Place place;
    char key;
    unsigned weight;
    Move move = Move::kStay;
    Place next = Place::kMain;
    bool needs_selection = false;
};

constexpr KeyRow kKeys[] = {
    {Place::kMain, 'c', 40, Move::kEnter, Place::kDevice},
    {Place::kMain, 'r', 4},
    {Place::kMain, 'l', 4},
    {Place::kMain, 'u', 5, Move::kEnter, Place::kUserId},
    {Place::kMain, 'p', 5, Move::kEnter, Place::kPassword},
    {Place::kMain, 'h', 2},

    {Place::kProfile, 's', 12, Move::kEnter, Place::kLocation},
    {Place::kProfile, 'a', 16, Move::kEnter, Place::kPullAllFilter, true},
    {Place::kProfile, 'p', 16, Move::kEnter, Place::kHandle, true},
    {Place::kProfile, 'l', 8, Move::kEnter, Place::kListFilter, true},
    {Place::kProfile, 'o', 10, Move::kEnter, Place::kSearchField, true},
    {Place::kProfile, 'm', 6, Move::kEnter, Place::kSizeFilter, true},
    {Place::kProfile, 'n', 6, Move::kEnter, Place::kSizeFilter, true},
    {Place::kProfile, 'g', 5, Move::kStay, {}, true},
    {Place::kProfile, 'u', 3},
    {Place::kProfile, 'f', 3},
    {Place::kProfile, 'h', 1},
    {Place::kProfile, 'x', 3, Move::kLeave},

    {Place::kPullAllFilter, 'f', 5, Move::kEnter, Place::kFormat},
    {Place::kPullAllFilter, 'c', 5, Move::kEnter, Place::kMaxCount},
    {Place::kPullAllFilter, 'o', 5, Move::kEnter, Place::kOffset},
    {Place::kPullAllFilter, 'm', 2},
    {Place::kPullAllFilter, 'a', 3},
    {Place::kPullAllFilter, 'r', 2},
    {Place::kPullAllFilter, 's', 4, Move::kEnter, Place::kField},
    {Place::kPullAllFilter, 'i', 2},
    {Place::kPullAllFilter, 'j', 2},
    {Place::kPullAllFilter, 'k', 4, Move::kEnter, Place::kField},
    {Place::kPullAllFilter, 'l', 4, Move::kEnter, Place::kSelectorFilter},
    {Place::kPullAllFilter, 'u', 2},
    {Place::kPullAllFilter, 'h', 1},
    {Place::kPullAllFilter, 'd', 18, Move::kGo, Place::kTransfer},

    {Place::kPullFilter, 'f', 5, Move::kEnter, Place::kFormat},
    {Place::kPullFilter, 'a', 3},
    {Place::kPullFilter, 'r', 2},
    {Place::kPullFilter, 's', 4, Move::kEnter, Place::kField},
    {Place::kPullFilter, 'h', 1},
    {Place::kPullFilter, 'd', 12, Move::kGo, Place::kTransfer},

    {Place::kListFilter, 'r', 5, Move::kEnter, Place::kOrder},
    {Place::kListFilter, 'c', 5, Move::kEnter, Place::kMaxCount},
    {Place::kListFilter, 'o', 5, Move::kEnter, Place::kOffset},
    {Place::kListFilter, 'm', 2},
    {Place::kListFilter, 'i', 2},
    {Place::kListFilter, 'j', 2},
    {Place::kListFilter, 'k', 4, Move::kEnter, Place::kField},
    {Place::kListFilter, 'l', 4, Move::kEnter, Place::kSelectorFilter},
    {Place::kListFilter, 'u', 2},
    {Place::kListFilter, 'h', 1},
    {Place::kListFilter, 'd', 14, Move::kLeave},

    {Place::kSizeFilter, 'm', 2},
    {Place::kSizeFilter, 'i', 2},
    {Place::kSizeFilter, 'j', 2},
    {Place::kSizeFilter, 'k', 4, Move::kEnter, Place::kField},
    {Place::kSizeFilter, 'l', 4, Move::kEnter, Place::kSelectorFilter},
    {Place::kSizeFilter, 'u', 2},
    {Place::kSizeFilter, 'h', 1},
    {Place::kSizeFilter, 'd', 10, Move::kLeave},

    {Place::kTransfer, 'd', 8},
    {Place::kTransfer, 's', 6},
    {Place::kTransfer, 'p', 5},
    {Place::kTransfer, 'r', 5},
    {Place::kTransfer, 'h', 1},
    {Place::kTransfer, 'c', 5, Move::kGo, Place::kCancelled},
    {Place::kTransfer, 'x', 6, Move::kLeave},

    {Place::kCancelled, 'x', 1},
};

// What the number prompts have rules for, right or wrong.
constexpr const char* kOddNumbers[] = {
    "x",    "x5",    " x",         "-1",         "65535", "65536", "4294967295",
    "0x10", "12abc", "4294967296", "1000000000", "   ",   "",      "99999999999999999999",
    "1e3",  "+1",    "-0",         "\t2"};

// Texts that some prompt treats in its own way.
constexpr const char* kTexts[] = {
    "",
    "engineer",
    "1234",
    "1",
    "0",
    "1A",
    "0000001A",
    "000000001",
    "0x1",
    " 1",
    "-1",
    "1G",
    "a",
    "555",
    "X-BT-UID:0123456789abcdef0123456789ABCDEF",
    "X-BT-UID:0123456789abcdef0123456789ABCDE",
    "X-BT-UID:0123456789abcdef0123456789ABCDEF0",
    "x-bt-uid:0123456789abcdef0123456789ABCDEF",
    "%s%n%d %",
    "J\xc3\xb8rgen \xe2\x82\xac \xf0\x9f\x93\x9e",
    "cut \xe2\x82",
    "\xff\xfe\x80",
};

constexpr const char* kOddLines[] = {
    "",    " ", "\t", "X",      "H",        "C", "help", "  h", "!",
    "zzz", "0", "9",  "%s%s%n", "\xc3\xa9", "-", "d",    "x",
};

// What a place's valid answer makes the tool call, if much depends on it.
struct CallRow {
    Place place;
    const char* method;
};

constexpr CallRow kCalls[] = {{Place::kDevice, "CreateSession"},
                              {Place::kPhonebook, "Select"},
                              {Place::kPullAllFilter, "PullAll"},
                              {Place::kPullFilter, "Pull"}};

constexpr std::size_t kMegabyte = std::size_t{1} << 20U;
constexpr std::size_t kBytesOnTerminal = 300;

const PlaceRow& RowOf(Place place) {
    return *std::find_if(std::begin(kPlaces), std::end(kPlaces),
                         [place](const PlaceRow& row) { return row.place == place; });
}

}  // namespace

const char* SegmentOf(Place place) {
    return RowOf(place).segment;
}

std::vector<std::string> AllSegments() {
    std::vector<std::string> segments;
    for (const PlaceRow& row : kPlaces)
        if (std::find(segments.begin(), segments.end(), row.segment) == segments.end())
            segments.emplace_back(row.segment);
    return segments;
}

std::string Operator::DrawLine() {
    std::string line = dice_.Chance(88) ? DrawApt() : DrawOdd();
    Forecast(line);
    return line;
}

std::string Operator::DrawUnterminated() {
    return dice_.Chance(60) ? DrawApt() : DrawOdd();
}

std::string Operator::GiveCredentials() const {
    return "u\nengineer\np\n1234\n";
}

std::string Operator::GoHome() {
    places_ = {Place::kMain};
    session_lost_ = false;
    return "d\nx\nx\nx\n";
}

void Operator::LoseSession() {
    session_lost_ = session_lost_ || (places_.size() > 1 && places_[1] == Place::kProfile);
}

void Operator::LoseClient() {
    session_lost_ = places_.size() > 1;
    client_is_there_ = false;
}

std::string Operator::DrawApt() {
    switch (RowOf(Now()).kind) {
        case Kind::kMenu:
            return DrawKey();
        case Kind::kNumber:
            return DrawNumber();
        case Kind::kText:
            return DrawText();
    }
    return "";
}

unsigned Operator::PastOf(Place place) const {
    return place == Place::kDevice ? phones_ : RowOf(place).past;
}

// Whether what a valid answer leads to is going to be refused.
bool Operator::Fails(Place place) const {
    return std::any_of(std::begin(kCalls), std::end(kCalls), [&](const CallRow& row) {
        return row.place == place && failing_.count(row.method) > 0;
    });
}

std::string Operator::DrawKey() {
    // What needs a selected phone book without one is worth a try, but rarely.
    const bool anything = selected_ || dice_.Chance(5);
    const KeyRow& row = dice_.PickWeighted(kKeys, [&](const KeyRow& key) -> std::size_t {
        if (key.place != Now() || (key.needs_selection && !anything)) return 0;
        return key.key == 's' && !selected_ ? 10 * key.weight : key.weight;
    });
    return {row.key};
}

std::string Operator::DrawNumber() {
    // Little can be reached without a device.
    const bool gate = Now() == Place::kDevice || dice_.Chance(50);
    if (dice_.Chance(gate ? 5 : 20)) return dice_.Pick(kOddNumbers);
    const std::size_t smallest = RowOf(Now()).smallest;
    const std::size_t past = PastOf(Now());
    const std::array<std::size_t, 5> numbers = {smallest, past - 1, 0,
                                                smallest + dice_.Below(past - smallest),
                                                dice_.Chance(gate ? 5 : 40) ? past : past - 1};
    return std::to_string(dice_.Pick(numbers));
}

std::string Operator::DrawText() {
    // Most handles that are well formed lead nowhere; the first cards exist.
    if (Now() == Place::kHandle && dice_.Chance(60)) return std::to_string(dice_.Below(20));
    if (dice_.Chance(70)) return dice_.Pick(kTexts);
    return DrawBytes(RowOf(Now()).past - 2 + dice_.Below(5));
}

std::string Operator::DrawOdd() {
    if (dice_.Chance(70)) return dice_.Pick(kOddLines);
    if (on_terminal_) return DrawBytes(dice_.Below(kBytesOnTerminal));
    if (dice_.Chance(80)) return DrawBytes(dice_.Below(5000));
    return std::string(kMegabyte / 2 + dice_.Below(kMegabyte), dice_.Pick("hx1 \xe2q\0"));
}

// A terminal takes control bytes for itself: Ctrl-C, Ctrl-D, Ctrl-Z, line editing.
std::string Operator::DrawBytes(std::size_t length) {
    std::string bytes;
    while (bytes.size() < length) {
        const auto byte = static_cast<unsigned char>(dice_.Below(256));
        const bool is_taken = on_terminal_ ? std::iscntrl(byte) != 0 : byte == '\n';
        if (!is_taken) bytes += static_cast<char>(byte);
    }
    return bytes;
}

void Operator::Forecast(const std::string& line) {
    const std::size_t first = line.find_first_not_of(" \t\v\f\r");
    const PlaceRow& row = RowOf(Now());
    if (row.kind != Kind::kText && first == std::string::npos) return;
    if (session_lost_ && Now() != Place::kMain) {
        places_ = {Place::kMain};
        session_lost_ = false;
        return;
    }
    if (row.kind == Kind::kText) Finish(row.next, row.move == Move::kLeave);
    if (row.kind == Kind::kNumber) ForecastNumber(line);
    if (row.kind == Kind::kMenu) ForecastKey(line[first]);
}

void Operator::ForecastKey(char key) {
    if (Now() == Place::kMain && !client_is_there_) return;
    if (Now() == Place::kCancelled) return Finish({}, true);
    const auto row = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const KeyRow& candidate) {
        return candidate.place == Now() && candidate.key == key;
    });
    if (row == std::end(kKeys) || (row->needs_selection && !selected_)) return;
    if (row->move == Move::kEnter) places_.push_back(row->next);
    if (row->move == Move::kGo) Finish(row->next, Fails(Now()));
    if (row->move == Move::kLeave) Finish({}, true);
}

void Operator::ForecastNumber(const std::string& line) {
    char* end = nullptr;
    const unsigned long long number = std::strtoull(line.c_str(), &end, 10);
    if (end == line.c_str() && line[0] != 'x') return;  // asked again
    const PlaceRow& row = RowOf(Now());
    const bool valid = line[0] != 'x' && number >= row.smallest && number < PastOf(Now());
    const bool fails = Fails(Now());
    if (valid && Now() == Place::kPhonebook) selected_ = !fails;
    if (valid && Now() == Place::kDevice) selected_ = session_lost_ = false;
    Finish(row.next, !valid || fails || row.move == Move::kLeave);
}

void Operator::Finish(Place next, bool goes_back) {
    if (goes_back) {
        places_.pop_back();
    } else {
        places_.back() = next;
    }
}

}  // namespace morvane_test
