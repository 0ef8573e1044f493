#include "robustness/prompt_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <future>
#include <iostream>
#include <set>
#include <string>
#include <vector>

// Injects every fault at every prompt. Three tables: the prompts (robustness/prompt_cases.cpp), the
// faults, and the expected behaviour for each combination.

namespace morvane_test {
namespace {

using Names = std::vector<std::string>;

const std::string kClientPath = simulator::kClientPath;
const std::string kFailed = "com.veltrisonix.Error.Failed";
const std::string kRefusedCall = "GDBus.Error:com.veltrisonix.Error.Failed: no";
constexpr std::size_t kFlood = 200;

class FaultMatrix;

struct Fault {
    std::string name;
    void (FaultMatrix::*prepare)();  ///< before the tool starts, or null
    void (FaultMatrix::*begin)();    ///< before the prompt is opened, or null
    void (FaultMatrix::*inject)();   ///< at the prompt
    bool in_call = false;            ///< affects the call that an answer makes
};

/// Whether the call of the answer, if there is one, reaches the daemon.
enum class Sends { kItsCall, kNothing };

/// The expected behaviour for some faults at some prompts. `output` is printed after the answer, up
/// to the next prompt.
struct Expectation {
    Names faults;
    Names prompts;  ///< empty: all
    std::string (*output)(const PromptCase& prompt) = nullptr;
    Sends sends = Sends::kNothing;
    void (FaultMatrix::*ending)() = nullptr;  ///< checked instead of `output`
    const char* cannot_occur = nullptr;       ///< the reason, if the combination is impossible
};

struct Cell {
    const Fault* fault;
    const PromptCase* prompt;
    const Expectation* expectation;

    [[nodiscard]] std::string Name() const { return fault->name + "_At" + prompt->name; }
};

class FaultMatrix : public PromptCaseTest, public testing::WithParamInterface<Cell> {
  public:
    void HideProperties();
    void MistypeProperties();
    void UseEmptyTransferPath();
    void KeepATransfer();

    void DisconnectTheDaemon();
    void RestartTheDaemon();
    void RemoveTheClient();
    void ReplaceTheClient();
    void RemoveTheDevice();
    void CloseTheSession();
    void LoseTheConnection();
    void RefuseTheCall();
    void HangTheCall();
    void ReplyWithAWrongType();
    void InvalidateTheProperty();
    void MistypeTheProperty();
    void FloodWithNotifications();
    void NotifyOfThePreviousTransfer();
    void Nothing() {}

    void ExpectAbort();
    void ExpectReplacementInAFlood();

  protected:
    const PromptCase& At() const { return *GetParam().prompt; }
    std::string Line() const { return GetParam().fault->in_call ? At().call.line : At().answer; }
    std::string Removed(const std::string& path) const;
    std::string Found(const std::string& text) const;
    void ExpectLossOfTheDaemon();
    // Pulls are called even after a loss of connection; gives the call a fixed error.
    void RefusePulls() { daemon().Refuse("Pull", kFailed, "no"); }
    void Do(void (FaultMatrix::*act)()) {
        if (act) (this->*act)();
    }

  private:
    std::future<void> flood_;
};

const Fault kFaults[] = {
    {"DaemonDisconnects", nullptr, nullptr, &FaultMatrix::DisconnectTheDaemon},
    {"DaemonRestarts", nullptr, nullptr, &FaultMatrix::RestartTheDaemon},
    {"ClientRemoved", nullptr, nullptr, &FaultMatrix::RemoveTheClient},
    {"ClientReplaced", nullptr, nullptr, &FaultMatrix::ReplaceTheClient},
    {"DeviceRemoved", nullptr, nullptr, &FaultMatrix::RemoveTheDevice},
    {"SessionClosed", nullptr, nullptr, &FaultMatrix::CloseTheSession},
    {"ConnectionLost", nullptr, nullptr, &FaultMatrix::LoseTheConnection},
    {"CallRefused", nullptr, nullptr, &FaultMatrix::RefuseTheCall, true},
    {"CallHangs", nullptr, nullptr, &FaultMatrix::HangTheCall, true},
    {"ReplyOfWrongType", nullptr, nullptr, &FaultMatrix::ReplyWithAWrongType, true},
    {"PropertyInvalidated", nullptr, nullptr, &FaultMatrix::InvalidateTheProperty},
    {"PropertyOfWrongType", nullptr, nullptr, &FaultMatrix::MistypeTheProperty},
    {"PropertiesMissing", &FaultMatrix::HideProperties, nullptr, &FaultMatrix::Nothing},
    {"PropertiesOfWrongType", &FaultMatrix::MistypeProperties, nullptr, &FaultMatrix::Nothing},
    {"EmptyTransferPath", &FaultMatrix::UseEmptyTransferPath, nullptr, &FaultMatrix::Nothing},
    {"NotificationFlood", nullptr, nullptr, &FaultMatrix::FloodWithNotifications},
    {"TransferReplaced", nullptr, &FaultMatrix::KeepATransfer,
     &FaultMatrix::NotifyOfThePreviousTransfer},
};

struct Property {
    const char* interface;
    const char* name;
};

// Properties that a daemon may omit or send with another type without effect on functions.
constexpr Property kInformation[] = {
    {simulator::kDeviceInterface, "Alias"},
    {simulator::kSessionInterface, "Source"},
    {simulator::kSessionInterface, "Destination"},
    {simulator::kSessionInterface, "Channel"},
    {simulator::kSessionInterface, "Target"},
    {simulator::kPhonebookInterface, "Folder"},
    {simulator::kPhonebookInterface, "FixedImageSize"},
    {simulator::kTransferInterface, "Status"},
    {simulator::kTransferInterface, "Size"},
    {simulator::kTransferInterface, "Transferred"},
    {simulator::kTransferInterface, "Filename"},
};

constexpr char kWrongTypeWarning[] =
    "GLib-GIO-WARNING.*Received property \\w+ with type \\(u\\) does not match expected type";

void FaultMatrix::HideProperties() {
    for (const Property& property : kInformation)
        daemon().HideProperty(simulator::kAnyPath, property.interface, property.name);
}

void FaultMatrix::MistypeProperties() {
    for (const Property& property : kInformation)
        daemon().OverrideProperty(simulator::kAnyPath, property.interface, property.name,
                                  Value("(uint32 7,)"));
}

void FaultMatrix::UseEmptyTransferPath() {
    daemon().ClearFaults();
    daemon().UseEmptyTransferPath(true);
}

// Closes the transfer menu. For the prompt of devices the transfer is kept, since the session is
// not removed.
void FaultMatrix::KeepATransfer() {
    const bool in_main_menu = !InSession(At().id);
    if (in_main_menu) {
        OpenSelectedSession();
        daemon().Refuse("RemoveSession", kFailed, "no", 1);
    }
    daemon().ClearFaults();
    PullAll(std::string(1000, 'x'));
    if (!in_main_menu) {
        Type("x");
        Await(Prompt(kPhonebookMenu));
        if (!At().call.reply.empty()) daemon().Reply(At().call.method, Value(At().call.reply));
        return;
    }
    daemon().Refuse("RemoveSession", kFailed, "no", 1);
    daemon().SetConnectionState(kFirstSession, 3);
    ExpectNoOutput(kTransferMenu);
    Type("s");
    Await(Red("Remove Session failed " + kRefusedCall + "\n") + Prompt());
}

std::string FaultMatrix::Removed(const std::string& path) const {
    return Notification(At().segment, "Removed " + path + "\n", kRedSequence);
}

std::string FaultMatrix::Found(const std::string& text) const {
    return Notification(At().segment, "Found " + text + "\n");
}

// Removing the client releases its session, whose transfer deletes its file.
void FaultMatrix::ExpectLossOfTheDaemon() {
    std::vector<std::string> messages = {Removed(kClientPath), Removed(kPhonePath)};
    if (At().HasTransfer())
        messages.push_back(Notification(At().segment, "Removing: " + PulledPhonebook() + "\n"));
    ExpectInAnyOrder(messages);
}

void FaultMatrix::DisconnectTheDaemon() {
    daemon().LeaveBus();
    ExpectLossOfTheDaemon();
}

void FaultMatrix::RestartTheDaemon() {
    daemon().Crash();
    ExpectLossOfTheDaemon();
    daemon().ReturnToBus();
    ExpectInAnyOrder({Found("Client " + kClientPath), Found(std::string("Device ") + kPhonePath)});
    ExpectNoOutput(At().segment);
}

void FaultMatrix::RemoveTheClient() {
    daemon().RemoveClient();
    if (At().HasTransfer())
        Expect(Notification(At().segment, "Removing: " + PulledPhonebook() + "\n"));
    Expect(Removed(kClientPath));
}

void FaultMatrix::ReplaceTheClient() {
    RemoveTheClient();
    ReturnClient(At().segment);
}

void FaultMatrix::RemoveTheDevice() {
    RefusePulls();
    daemon().RemoveDevice(kPhonePath);
    ExpectEndOfTransfer(At());
    Expect(Removed(kPhonePath));
}

void FaultMatrix::CloseTheSession() {
    RefusePulls();
    daemon().CloseSession(kFirstSession);
    ExpectEndOfTransfer(At());
    ExpectNoOutput(At().segment);
}

void FaultMatrix::LoseTheConnection() {
    RefusePulls();
    EndTransfer(At());
    LoseConnection(At().segment);
}

void FaultMatrix::RefuseTheCall() {
    daemon().Refuse(At().call.method, kFailed, "no", 1);
}

void FaultMatrix::HangTheCall() {
    daemon().Hang(At().call.method, 1);
    console().SetPatience(Stretched(std::chrono::seconds(60)));
}

void FaultMatrix::ReplyWithAWrongType() {
    daemon().Reply(At().call.method, Value("(uint32 7,)"), 1);
}

void FaultMatrix::InvalidateTheProperty() {
    const PromptProperty& property = At().property;
    RefusePulls();
    daemon().Invalidate(property.path, property.interface, property.name);
    Expect(property.output_if_invalidated);
    ExpectNoOutput(At().segment);
}

void FaultMatrix::MistypeTheProperty() {
    const PromptProperty& property = At().property;
    daemon().Notify(property.path, property.interface, property.name, Value("(uint32 7,)"));
    Expect(property.output_on_wrong_type);
    ExpectNoOutput(At().segment);
}

// Changes of devices are not reported, those of sessions are.
void FaultMatrix::FloodWithNotifications() {
    const std::string last = kPhoneAlias;
    daemon().Flood(kPhonePath, simulator::kDeviceInterface, "Alias", kFlood, [&](std::size_t i) {
        return g_variant_new_string(i + 1 == kFlood ? last.c_str() : "another");
    });
    if (InSession(At().id)) {
        std::string notifications;
        for (std::size_t i = 0; i < kFlood; ++i)
            notifications += Notification(
                At().segment, "Channel Attribute Received: " + std::to_string(i) + "\n");
        daemon().Flood(kFirstSession, simulator::kSessionInterface, "Channel", kFlood,
                       [](std::size_t i) { return g_variant_new_uint16(static_cast<guint16>(i)); });
        Expect(notifications);
    }
    ExpectNoOutput(At().segment);
}

// Continues during the answer. Notifications of a released transfer are not reported.
void FaultMatrix::NotifyOfThePreviousTransfer() {
    flood_ = std::async(std::launch::async, [this] {
        daemon().Flood(kFirstTransfer, simulator::kTransferInterface, "Transferred", 2000,
                       [](std::size_t i) { return g_variant_new_uint64(i % 1001); });
    });
}

std::string AcceptedOutput(const PromptCase& prompt) {
    return prompt.output;
}

std::string Lost(const PromptCase& prompt) {
    return prompt.lost + Prompt();
}

std::string Failure(const PromptCase& prompt, const std::string& message) {
    return Red(prompt.call.failure + message + "\n") + Prompt(prompt.call.next);
}

std::string Refused(const PromptCase& prompt) {
    return Failure(prompt, kRefusedCall);
}

std::string TimedOut(const PromptCase& prompt) {
    return Failure(prompt, "Timeout was reached");
}

std::string WrongReply(const PromptCase& prompt) {
    return Failure(prompt, "Method “" + prompt.call.method +
                               "” returned type “(u)”, but expected “" + prompt.call.reply_type +
                               "”");
}

std::string NoClient(const PromptCase& /*prompt*/) {
    return Red("No Client available, start daemon.\n") + Prompt();
}

// The client does not know that the session is closed, and removes it.
const std::string kRemovalRefused =
    Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: No such session: " +
        std::string(kFirstSession) + "\n");

std::string LostWithTheSession(const PromptCase& prompt) {
    return prompt.lost + kRemovalRefused + Prompt();
}

// The file is deleted when the session has been removed successfully.
std::string LostAndFileRemoved(const PromptCase& prompt) {
    return prompt.lost + Normal("Removing: <directory>/phonebook.vcf\n") + Prompt();
}

// The filter menu before this pull does not check the session.
const std::string kPullRefused =
    Red("Remote Call failed: " + kRefusedCall + "\n") + Red("Client Proxy is invalid\n");

std::string LostInTheCall(const PromptCase& /*prompt*/) {
    return kPullRefused + Prompt();
}

std::string LostInTheCallWithTheSession(const PromptCase& /*prompt*/) {
    return kPullRefused + kRemovalRefused + Prompt();
}

std::string NoDevices(const PromptCase& /*prompt*/) {
    return DeviceList({}) + Prompt();
}

std::string InvalidDevice(const PromptCase& /*prompt*/) {
    return Red("Invalid Client selected\n") + Prompt();
}

std::string NamelessDevice(const PromptCase& /*prompt*/) {
    return DeviceList({"00:1B:DC:07:31:9A | Unknown"}) + Prompt();
}

std::string BareSession(const PromptCase& /*prompt*/) {
    return UnknownSession("Connected") + Prompt(kPhonebookMenu);
}

std::string NoStatus(const PromptCase& prompt) {
    return Normal("Transfer Status: \n") + Prompt(prompt.segment);
}

std::string BareTransfer(const PromptCase& /*prompt*/) {
    return Prompt(kTransferMenu);
}

void FaultMatrix::ExpectAbort() {
    console().AllowStderr("^terminate called after throwing an instance of 'std::logic_error'$");
    console().AllowStderr("^  what\\(\\):  .*null");
    console().ExpectEndBySignal(SIGABRT);
}

// The number of percentages printed before the transfer is released is undefined.
void FaultMatrix::ExpectReplacementInAFlood() {
    Await(Normal("Session Connected\n"));
    Await(Normal("Removing: " + PulledPhonebook() + "\n"));
    Await(Prompt(kPhonebookMenu));
    flood_.get();
    ExpectNoOutput(kPhonebookMenu);
}

const Names kCredentials = {"UserId", "Password"};
const Names kOutsideSessions = {"MainMenu", "DeviceChoice", "UserId", "Password"};
const Names kWithoutCalls = {"Location", "Format",   "Order",  "Field",
                             "Selector", "MaxCount", "Offset", "SearchField"};
const Names kPulls = {"PullAllFilters", "PullFilters"};
const Names kAllPrompts = {};

// The first match applies.
const Expectation kExpectations[] = {
    {{"DaemonDisconnects", "ClientRemoved"}, {"MainMenu"}, NoClient},
    {{"DaemonDisconnects", "ClientRemoved"}, kAllPrompts, Lost},
    {{"DaemonRestarts", "ClientReplaced"}, kOutsideSessions, AcceptedOutput, Sends::kItsCall},
    {{"DaemonRestarts", "ClientReplaced"}, kAllPrompts, Lost},

    {{"DeviceRemoved"}, {"MainMenu"}, NoDevices},
    {{"DeviceRemoved"}, {"DeviceChoice"}, InvalidDevice},
    {{"DeviceRemoved"}, kCredentials, AcceptedOutput, Sends::kItsCall},
    {{"SessionClosed", "ConnectionLost"},
     kOutsideSessions,
     nullptr,
     Sends::kNothing,
     nullptr,
     "no session is open here"},
    {{"DeviceRemoved", "SessionClosed"},
     {"PullFilters"},
     LostInTheCallWithTheSession,
     Sends::kItsCall},
    {{"DeviceRemoved", "SessionClosed"}, kAllPrompts, LostWithTheSession},
    {{"ConnectionLost"}, {"PullFilters"}, LostInTheCall, Sends::kItsCall},
    {{"ConnectionLost"}, {"TransferMenu"}, LostAndFileRemoved},
    {{"ConnectionLost"}, kAllPrompts, Lost},

    {{"CallRefused", "CallHangs", "ReplyOfWrongType"},
     kWithoutCalls,
     nullptr,
     Sends::kNothing,
     nullptr,
     "no call is made here"},
    {{"CallRefused"}, kAllPrompts, Refused, Sends::kItsCall},
    {{"CallHangs"}, kAllPrompts, TimedOut, Sends::kItsCall},
    {{"ReplyOfWrongType"}, kAllPrompts, WrongReply, Sends::kItsCall},

    {{"PropertyInvalidated", "PropertyOfWrongType"},
     kCredentials,
     nullptr,
     Sends::kNothing,
     nullptr,
     "the client object has no properties"},
    {{"PropertyInvalidated"}, {"MainMenu"}, NamelessDevice},
    // CreateSession requires an address: a daemon that provides none is broken.
    {{"PropertyInvalidated"},
     {"DeviceChoice"},
     nullptr,
     Sends::kNothing,
     &FaultMatrix::ExpectAbort},
    {{"PropertyInvalidated"}, {"TransferMenu"}, NoStatus},
    {{"PropertyInvalidated"}, {"PullFilters"}, LostInTheCall, Sends::kItsCall},
    {{"PropertyInvalidated"}, kAllPrompts, Lost},
    {{"PropertyOfWrongType"}, kAllPrompts, AcceptedOutput, Sends::kItsCall},
    {{"PropertiesMissing", "PropertiesOfWrongType"}, {"MainMenu"}, NamelessDevice},
    {{"PropertiesMissing", "PropertiesOfWrongType"},
     {"DeviceChoice"},
     BareSession,
     Sends::kItsCall},
    {{"PropertiesMissing", "PropertiesOfWrongType"}, {"TransferMenu"}, NoStatus},
    {{"PropertiesMissing", "PropertiesOfWrongType"}, kAllPrompts, AcceptedOutput, Sends::kItsCall},

    {{"EmptyTransferPath"}, kPulls, BareTransfer, Sends::kItsCall},
    {{"EmptyTransferPath"}, {"TransferMenu"}, NoStatus},
    {{"EmptyTransferPath"}, kAllPrompts, nullptr, Sends::kNothing, nullptr, "no pull is made here"},
    {{"NotificationFlood"}, kAllPrompts, AcceptedOutput, Sends::kItsCall},
    {{"TransferReplaced"},
     {"DeviceChoice"},
     nullptr,
     Sends::kItsCall,
     &FaultMatrix::ExpectReplacementInAFlood},
    {{"TransferReplaced"},
     {"PullAllFilters", "PullFilters", "TransferMenu"},
     AcceptedOutput,
     Sends::kItsCall},
    {{"TransferReplaced"},
     kAllPrompts,
     nullptr,
     Sends::kNothing,
     nullptr,
     "no transfer replaces another here"},
};

bool Contains(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

const Expectation* Find(const Fault& fault, const PromptCase& prompt) {
    for (const Expectation& expectation : kExpectations)
        if (Contains(expectation.faults, fault.name) &&
            (expectation.prompts.empty() || Contains(expectation.prompts, prompt.name)))
            return &expectation;
    return nullptr;
}

std::vector<Cell> AllCells() {
    std::vector<Cell> cells;
    for (const Fault& fault : kFaults)
        for (const PromptCase& prompt : PromptCases())
            cells.push_back({&fault, &prompt, Find(fault, prompt)});
    return cells;
}

std::vector<Cell> CellsThatOccur() {
    std::vector<Cell> cells;
    for (const Cell& cell : AllCells())
        if (cell.expectation && !cell.expectation->cannot_occur) cells.push_back(cell);
    return cells;
}

void PrintTo(const Cell& cell, std::ostream* stream) {
    *stream << cell.Name();
}

TEST_P(FaultMatrix, Cell) {
    const auto& [fault, prompt, expected] = GetParam();
    StartCaseDaemon(*prompt);
    Do(fault->prepare);
    Start();
    console().AllowStderr(kWrongTypeWarning);
    ReachBase(*prompt);
    Do(fault->begin);
    Open(*prompt);
    Do(fault->inject);

    const std::size_t calls = CountCalls(prompt->call.method);
    Type(Line());
    if (expected->ending) {
        Do(expected->ending);
    } else {
        ExpectOutput(expected->output(*prompt));
    }
    const bool sends = expected->sends == Sends::kItsCall && Line() == prompt->call.line;
    EXPECT_EQ(CountCalls(prompt->call.method), calls + (sends ? 1U : 0U));
}

INSTANTIATE_TEST_SUITE_P(, FaultMatrix, testing::ValuesIn(CellsThatOccur()),
                         [](const auto& cell) { return cell.param.Name(); });

// Input of scripts/fault-matrix, including combinations that are not tested.
void PrintForScript(const Cell& cell) {
    if (cell.expectation->cannot_occur) {
        std::cout << "cannot occur: " << cell.Name() << ": " << cell.expectation->cannot_occur;
    } else {
        std::cout << "cell: " << cell.Name();
    }
    std::cout << '\n';
}

TEST(FaultMatrixTable, HasAnExpectationForEveryCell) {
    std::cout << "CTEST_FULL_OUTPUT\n";  // prevents CTest from truncating it
    std::set<const Expectation*> used;
    for (const Cell& cell : AllCells()) {
        ASSERT_TRUE(cell.expectation) << cell.Name();
        used.insert(cell.expectation);
        PrintForScript(cell);
    }
    EXPECT_EQ(used.size(), std::size(kExpectations)) << "some expectations match no combination";
}

}  // namespace
}  // namespace morvane_test
