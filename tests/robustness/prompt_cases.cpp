#include "robustness/prompt_cases.h"

namespace morvane_test {
namespace {

using Id = PromptId;

const std::string kClientLost = Red("Client Proxy is invalid\n");
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n");
const std::string kInvalidValue = Red("Invalid value\n");
const std::string kInvalidHandle =
    Red("Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n");
const std::string kRemoving = Normal("Removing: <directory>/phonebook.vcf\n");
const std::string kCallFailed = "Remote Call failed: ";

// Calls without a filter menu before them.
struct CallRow {
    Id id;
    AnswerCall call;
};

const CallRow kCalls[] = {
    {Id::kMain, {"r", "RemoveSession", "()", "Remove Session failed ", Id::kMain}},
    {Id::kDevice, {"0", "CreateSession", "(o)", "Create Session failed ", Id::kMain}},
    {Id::kUserId, {"me", "SetUserId", "()", "Set User Id failed ", Id::kMain}},
    {Id::kPassword, {"secret", "SetPassword", "()", "Set Password failed ", Id::kMain}},
    {Id::kPhonebookMenu, {"u", "UpdateVersion", "()", kCallFailed, Id::kPhonebookMenu}},
    {Id::kPhonebook, {"0", "Select", "()", kCallFailed, Id::kPhonebookMenu}},
    {Id::kHandle, {"1", "ListFilterFields", "(as)", kCallFailed, Id::kPhonebookMenu}},
    {Id::kSearchValue, {"Ada", "ListFilterFields", "(as)", kCallFailed, Id::kPhonebookMenu}},
    {Id::kTransfer, {"p", "Suspend", "()", "Remote Call failed ", Id::kTransfer}},
};

AnswerCall CallAt(Id id) {
    for (const CallRow& row : kCalls)
        if (row.id == id) return row.call;
    for (const Operation& operation : FilteredOperations())
        if (operation.filters == id)
            return {"d",         operation.method,   operation.reply_type,
                    kCallFailed, Id::kPhonebookMenu, operation.reply};
    return {};
}

PromptProperty PropertyAt(Id id) {
    if (id == Id::kMain) return {kPhonePath, simulator::kDeviceInterface, "Alias", "", ""};
    if (id == Id::kDevice) return {kPhonePath, simulator::kDeviceInterface, "Address", "", ""};
    if (id == Id::kTransfer)
        return {kFirstTransfer, simulator::kTransferInterface, "Status",
                Notification(kTransferMenu, "Status Attribute Received: Unknown\n"),
                Notification(kTransferMenu, "Status Attribute Received: queued\n")};
    if (!InSession(id)) return {};
    return {kFirstSession, simulator::kSessionInterface, "ConnectionState", "", ""};
}

// Output for the valid answer, without the next prompt.
std::string ResultAt(Id id) {
    if (id == Id::kMain) return DeviceList(RowOf(Id::kDevice).choices);
    if (id == Id::kDevice) return OpenedSession(kPhoneAddress);
    if (id == Id::kTransfer) return Normal("Transfer Status: queued\n");
    for (const Operation& operation : Operations())
        if (operation.method == CallAt(id).method && operation.method != "ListFilterFields")
            return operation.result;
    return "";
}

std::string LostAt(Id id) {
    if (id == Id::kMain) return "";
    return InSession(id) && id != Id::kPhonebookMenu ? kSessionLost : kClientLost;
}

Id NextAfter(const PromptRow& row, const std::string& answer) {
    if (row.asks != Asks::kKey) return row.move == Move::kGo ? row.next : MenuAbove(row.id);
    for (const KeyRow& key : KeysOf(row.id)) {
        if (answer[0] != key.key) continue;
        if (key.move == Move::kLeave) return MenuAbove(row.id);
        return key.move == Move::kStay ? row.id : key.next;
    }
    return row.id;
}

// After end of input each menu reads a key, which is "q"; filter menus reject it.
std::string EndOfInputAt(Id id) {
    const PromptRow& row = RowOf(id);
    if (id == Id::kTransfer) return kRemoving;
    if (row.segment == kFilterMenu) return kInvalidSelection + Prompt(kPhonebookMenu);
    if (row.asks == Asks::kKey) return "";
    const Id above = MenuAbove(id);
    if (id == Id::kHandle) return kInvalidHandle + Prompt(above);
    if (row.asks == Asks::kNumber)
        return Red(row.error + "\n") + Prompt(above) + EndOfInputAt(above);
    const Id next = NextAfter(row, row.answer);
    return QuestionAndPrompt(next) + EndOfInputAt(next);
}

std::string InvalidAnswerOutputAt(Id id) {
    const PromptRow& row = RowOf(id);
    if (row.asks == Asks::kKey) return kInvalidSelection + Prompt(id);
    if (row.asks == Asks::kNumber) return kInvalidValue + Prompt(id);
    if (id == Id::kHandle) return EndOfInputAt(id);
    return QuestionAndPrompt(NextAfter(row, row.answer));
}

PromptCase MakePromptCase(const PromptRow& row) {
    const Id next = NextAfter(row, row.answer);
    const bool enters = row.move == Move::kGo;
    PromptCase prompt = {row,
                         PathTo(row.id),
                         ResultAt(row.id) + (enters ? QuestionAndPrompt(next) : Prompt(next)),
                         LostAt(row.id),
                         InvalidAnswerOutputAt(row.id),
                         EndOfInputAt(row.id),
                         row.asks == Asks::kText ? QuestionAndPrompt(next) + EndOfInputAt(next)
                                                 : EndOfInputAt(row.id),
                         CallAt(row.id),
                         PropertyAt(row.id)};
    prompt.reports_loss_in_its_call = row.id == Id::kPullFilters;
    // Creates a session that "r" can remove.
    if (row.id == Id::kMain)
        prompt.opening = {{Id::kMain, "c", Id::kDevice},
                          {Id::kDevice, "0", Id::kPhonebookMenu},
                          {Id::kPhonebookMenu, "x", Id::kMain}};
    return prompt;
}

std::vector<PromptCase> MakePromptCases() {
    std::vector<PromptCase> prompts;
    for (const PromptRow& row : Prompts())
        if (row.id != Id::kCancelledTransfer) prompts.push_back(MakePromptCase(row));
    return prompts;
}

}  // namespace

const std::vector<PromptCase>& PromptCases() {
    static const std::vector<PromptCase> prompts = MakePromptCases();
    return prompts;
}

void PromptCaseTest::StartCaseDaemon(const PromptCase& prompt) {
    StartDaemon().AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
    daemon().SetPullContent(std::string(1000, 'x'));
    daemon().Reply("ListFilterFields", Value(FilterFieldsReply()));
    if (!prompt.call.reply.empty()) daemon().Reply(prompt.call.method, Value(prompt.call.reply));
}

void PromptCaseTest::ReachBase(const PromptCase& prompt, Here here) {
    if (InSession(prompt.id)) OpenSession(0, here);
    if (NeedsSelection(prompt.id)) SelectPhonebook(0, 0, here);
}

void PromptCaseTest::Open(const PromptCase& prompt, Here here) {
    for (const Answer& answer : prompt.opening)
        EnterAndAwait(answer.line, Prompt(answer.next), here);
}

void PromptCaseTest::Reach(const PromptCase& prompt, const ConsoleOptions& options, Here here) {
    StartCaseDaemon(prompt);
    Start(options, here);
    ReachBase(prompt, here);
    Open(prompt, here);
}

void PromptCaseTest::EndTransfer(const PromptCase& prompt, Here here) {
    if (prompt.HasTransfer()) daemon().AbortTransfer(kFirstTransfer);
    ExpectEndOfTransfer(prompt, here);
}

void PromptCaseTest::ExpectEndOfTransfer(const PromptCase& prompt, Here here) {
    if (prompt.HasTransfer())
        Expect(Notification(prompt.segment, "Status Attribute Received: error\n"), here);
}

std::string PromptCaseTest::Located(std::string output) const {
    const std::string mark = "<directory>";
    for (std::size_t at = output.find(mark); at != output.npos; at = output.find(mark))
        output.replace(at, mark.size(), directory().Path());
    return output;
}

void PromptCaseTest::ExpectOutput(const std::string& output, Here here) {
    Expect(Located(output), here);
}

void PromptCaseTest::ExpectInAnyOrder(const std::vector<std::string>& messages, Here here) {
    const std::size_t before = console().Consumed().size();
    std::size_t length = 0;
    for (const std::string& message : messages) length += message.size();
    AwaitAll(messages, here);
    if (console().Consumed().size() != before + length)
        FailTest(here,
                 "unexpected output between the messages: " + console().Consumed().substr(before));
}

std::vector<const PromptCase*> PromptCasesWith(bool (*condition)(const PromptCase&)) {
    std::vector<const PromptCase*> prompts;
    for (const PromptCase& prompt : PromptCases())
        if (condition(prompt)) prompts.push_back(&prompt);
    return prompts;
}

std::string NameOfPrompt(const testing::TestParamInfo<const PromptCase*>& prompt) {
    return prompt.param->name;
}

void PrintTo(const PromptCase* prompt, std::ostream* stream) {
    *stream << prompt->name;
}

}  // namespace morvane_test
