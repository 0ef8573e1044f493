#include "random/operator_lines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace morvane_test {
namespace {

constexpr unsigned kFields = 32;          // number of fields that the simulator lists
constexpr unsigned kPhonebooksOfSim = 5;  // internal memory has more

// Valid and invalid input for number prompts.
constexpr const char* kUnusualNumbers[] = {
    "x",    "x5",    " x",         "-1",         "65535", "65536", "4294967295",
    "0x10", "12abc", "4294967296", "1000000000", "   ",   "",      "99999999999999999999",
    "1e3",  "+1",    "-0",         "\t2"};

// Texts with a special meaning at some prompt.
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
    "%s%n%d %",
    "J\xc3\xb8rgen \xe2\x82\xac \xf0\x9f\x93\x9e",
    "cut \xe2\x82",
    "\xff\xfe\x80",
    "X-BT-UID:0123456789abcdef0123456789ABCDEF",
    "X-BT-UID:0123456789abcdef0123456789ABCDE",
    "X-BT-UID:0123456789abcdef0123456789ABCDEF0",
    "x-bt-uid:0123456789abcdef0123456789ABCDEF",
};

constexpr const char* kUnusualLines[] = {
    "",    " ", "\t", "X",      "H",        "C", "help", "  h", "!",
    "zzz", "0", "9",  "%s%s%n", "\xc3\xa9", "-", "d",    "x",
};

// Calls on whose success later prompts depend.
struct CallRow {
    PromptId prompt;
    const char* method;
};

constexpr CallRow kCalls[] = {{PromptId::kDevice, "CreateSession"},
                              {PromptId::kPhonebook, "Select"},
                              {PromptId::kPullAllFilters, "PullAll"},
                              {PromptId::kPullFilters, "Pull"}};

constexpr std::size_t kMegabyte = std::size_t{1} << 20U;
constexpr std::size_t kBytesOnTerminal = 300;

}  // namespace

std::string OperatorModel::DrawLine() {
    std::string line = random_.Chance(88) ? DrawPlausible() : DrawUnusual();
    Predict(line);
    return line;
}

std::string OperatorModel::DrawUnterminated() {
    return random_.Chance(60) ? DrawPlausible() : DrawUnusual();
}

std::string OperatorModel::GoHome() {
    prompts_ = {PromptId::kMain};
    session_lost_ = false;
    return "d\nx\nx\nx\n";
}

void OperatorModel::Expect(const DaemonEvent& event) {
    if (!event.failing_method.empty()) failing_.insert(event.failing_method);
    if (event.command == "clear-faults") failing_.clear();
    const bool in_menus = prompts_.size() > 1;
    if (event.loss == Loss::kSession && in_menus && prompts_[1] == PromptId::kPhonebookMenu)
        session_lost_ = true;
    if (event.loss == Loss::kClient) session_lost_ = in_menus;
    client_exists_ = event.restores_client || (client_exists_ && event.loss != Loss::kClient);
}

std::string OperatorModel::DrawPlausible() {
    const Asks asks = RowOf(Now()).asks;
    if (asks == Asks::kKey) return DrawKey();
    return asks == Asks::kNumber ? DrawNumber() : DrawText();
}

unsigned OperatorModel::LimitOf(PromptId prompt) const {
    if (prompt == PromptId::kDevice) return phones_;
    if (prompt == PromptId::kField) return kFields;
    if (prompt == PromptId::kPhonebook) return kPhonebooksOfSim;
    return RowOf(prompt).limit;
}

// Whether the call of a valid answer will fail.
bool OperatorModel::Fails(PromptId prompt) const {
    return std::any_of(std::begin(kCalls), std::end(kCalls), [&](const CallRow& row) {
        return row.prompt == prompt && failing_.count(row.method) > 0;
    });
}

std::string OperatorModel::DrawKey() {
    // Rarely choose keys that need a selected phone book without one.
    const bool anything = selected_ || random_.Chance(5);
    const std::vector<KeyRow> keys = KeysOf(Now());
    const KeyRow& row = random_.PickWeighted(keys, [&](const KeyRow& key) -> std::size_t {
        if (key.needs_selection && !anything) return 0;
        return key.key == 's' && !selected_ ? 10 * key.weight : key.weight;
    });
    return {row.key};
}

std::string OperatorModel::DrawNumber() {
    // Most prompts need a device.
    const bool is_important = Now() == PromptId::kDevice || random_.Chance(50);
    if (random_.Chance(is_important ? 5 : 20)) return random_.Pick(kUnusualNumbers);
    const std::size_t smallest = RowOf(Now()).smallest;
    const std::size_t past = LimitOf(Now());
    const std::array<std::size_t, 5> numbers = {
        smallest, past - 1, 0, smallest + random_.Below(past - smallest),
        random_.Chance(is_important ? 5 : 40) ? past : past - 1};
    return std::to_string(random_.Pick(numbers));
}

std::string OperatorModel::DrawText() {
    // Most valid handles do not exist; the first cards do.
    if (Now() == PromptId::kHandle && random_.Chance(60)) return std::to_string(random_.Below(20));
    if (random_.Chance(70)) return random_.Pick(kTexts);
    return DrawBytes(RowOf(Now()).limit - 2 + random_.Below(5));
}

std::string OperatorModel::DrawUnusual() {
    if (random_.Chance(70)) return random_.Pick(kUnusualLines);
    if (on_terminal_) return DrawBytes(random_.Below(kBytesOnTerminal));
    if (random_.Chance(80)) return DrawBytes(random_.Below(5000));
    return std::string(kMegabyte / 2 + random_.Below(kMegabyte), random_.Pick("hx1 \xe2q\0"));
}

// On a terminal, control bytes have special meanings: Ctrl-C, Ctrl-D, Ctrl-Z, line editing.
std::string OperatorModel::DrawBytes(std::size_t length) {
    std::string bytes;
    while (bytes.size() < length) {
        const auto byte = static_cast<unsigned char>(random_.Below(256));
        const bool is_taken = on_terminal_ ? std::iscntrl(byte) != 0 : byte == '\n';
        if (!is_taken) bytes += static_cast<char>(byte);
    }
    return bytes;
}

void OperatorModel::Predict(const std::string& line) {
    const std::size_t first = line.find_first_not_of(" \t\v\f\r");
    const PromptRow& row = RowOf(Now());
    if (row.asks != Asks::kText && first == std::string::npos) return;
    if (session_lost_ && Now() != PromptId::kMain) {
        prompts_ = {PromptId::kMain};
        session_lost_ = false;
        return;
    }
    if (row.asks == Asks::kText) Finish(row.next, row.move == Move::kLeave);
    if (row.asks == Asks::kNumber) PredictNumber(line);
    if (row.asks == Asks::kKey) PredictKey(line[first]);
}

void OperatorModel::PredictKey(char key) {
    if (Now() == PromptId::kMain && !client_exists_) return;
    if (Now() == PromptId::kCancelledTransfer) return Finish({}, true);
    const std::vector<KeyRow> keys = KeysOf(Now());
    const auto row = std::find_if(keys.begin(), keys.end(),
                                  [&](const KeyRow& candidate) { return candidate.key == key; });
    if (row == keys.end() || (row->needs_selection && !selected_)) return;
    if (row->move == Move::kEnter) prompts_.push_back(row->next);
    if (row->move == Move::kGo) Finish(row->next, Fails(Now()));
    if (row->move == Move::kLeave) Finish({}, true);
}

void OperatorModel::PredictNumber(const std::string& line) {
    char* end = nullptr;
    const unsigned long long number = std::strtoull(line.c_str(), &end, 10);
    if (end == line.c_str() && line[0] != 'x') return;  // asked again
    const PromptRow& row = RowOf(Now());
    const bool valid = line[0] != 'x' && number >= row.smallest && number < LimitOf(Now());
    const bool fails = Fails(Now());
    if (valid && Now() == PromptId::kPhonebook) selected_ = !fails;
    if (valid && Now() == PromptId::kDevice) selected_ = session_lost_ = false;
    Finish(row.next, !valid || fails || row.move == Move::kLeave);
}

void OperatorModel::Finish(PromptId next, bool to_menu_above) {
    if (to_menu_above) {
        prompts_.pop_back();
    } else {
        prompts_.back() = next;
    }
}

}  // namespace morvane_test
