#include "robustness/prompt_cases.h"

#include <algorithm>
#include <csignal>
#include <future>
#include <iostream>
#include <regex>
#include <set>
#include <utility>

// Injects every fault at every prompt. Three tables: the prompts (robustness/prompt_cases.cpp), the
// faults, and the expected behaviour for each combination.

namespace morvane_test {
namespace {

using Names = std::vector<std::string>;

const std::string kFailed = "com.veltrisonix.Error.Failed";
const std::string kRefusedCall = "GDBus.Error:com.veltrisonix.Error.Failed: no";
constexpr std::size_t kFlood = 200;

class FaultMatrix;

struct Fault {
    std::string name;
    void (FaultMatrix::*prepare)();  ///< called before the tool starts, or null
    void (FaultMatrix::*begin)();    ///< called before the prompt is opened, or null
    void (FaultMatrix::*inject)();   ///< called at the prompt
    bool in_call = false;            ///< affects the call that an answer makes
};

/// Whether the call of the answer, if there is one, reaches the daemon.
enum class Sends { kItsCall, kNothing };

/// The expected behaviour for some faults at some prompts. `output` is printed after the answer, up
/// to the next prompt.
struct Expectation {
    Names faults;
    Names prompts;  ///< empty: all
    std::string output;
    Sends sends = Sends::kNothing;
    void (FaultMatrix::*ending)() = nullptr;  ///< called instead of expecting `output`
    const char* cannot_occur = nullptr;       ///< the reason, if the combination is impossible
};

struct Cell {
    const Fault* fault;
    const PromptCase* prompt;
    const Expectation* expectation;

    [[nodiscard]] std::string Name() const { return fault->name + "_At" + prompt->name; }
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

class FaultMatrix : public PromptCaseTest, public testing::WithParamInterface<Cell> {
  public:
    void HideProperties() {
        for (const Property& property : kInformation)
            daemon().HideProperty(simulator::kAnyPath, property.interface, property.name);
    }

    void MistypeProperties() {
        for (const Property& property : kInformation)
            daemon().OverrideProperty(simulator::kAnyPath, property.interface, property.name,
                                      Value("(uint32 7,)"));
    }

    void UseEmptyTransferPath() {
        daemon().ClearFaults();
        daemon().UseEmptyTransferPath(true);
    }

    // Pulls and leaves the transfer menu. At the prompts of the main menu the transfer still
    // exists, because the daemon refused to remove its session.
    void KeepATransfer() {
        const bool in_main_menu = !InSession(At().id);
        if (in_main_menu) {
            OpenSelectedSession();
            daemon().Refuse("RemoveSession", kFailed, "no", 1);
        }
        daemon().ClearFaults();
        PullAll(std::string(1000, 'x'));
        if (!in_main_menu) {
            EnterAndAwait("x", Prompt(kPhonebookMenu));
            if (!At().call.reply.empty()) daemon().Reply(At().call.method, Value(At().call.reply));
            return;
        }
        daemon().Refuse("RemoveSession", kFailed, "no", 1);
        daemon().SetConnectionState(kFirstSession, 3);
        ExpectNoOutput(kTransferMenu);
        EnterAndAwait("s", Red("Remove Session failed " + kRefusedCall + "\n") + Prompt());
    }

    void DisconnectTheDaemon() {
        daemon().LeaveBus();
        ExpectLossOfTheDaemon();
    }

    void RestartTheDaemon() {
        daemon().Crash();
        ExpectLossOfTheDaemon();
        daemon().ReturnToBus();
        ExpectInAnyOrder({Found("Client " + kClient), Found(std::string("Device ") + kPhonePath)});
        ExpectNoOutput(At().segment);
    }

    void RemoveTheClient() {
        daemon().RemoveClient();
        if (At().HasTransfer())
            Expect(Notification(At().segment, "Removing: " + PulledPhonebook() + "\n"));
        Expect(Removed(kClient));
    }

    void ReplaceTheClient() {
        RemoveTheClient();
        ReturnClient(At().segment);
    }

    void RemoveTheDevice() {
        RefusePulls();
        daemon().RemoveDevice(kPhonePath);
        ExpectEndOfTransfer(At());
        Expect(Removed(kPhonePath));
    }

    void CloseTheSession() {
        RefusePulls();
        daemon().CloseSession(kFirstSession);
        ExpectEndOfTransfer(At());
        ExpectNoOutput(At().segment);
    }

    void LoseTheConnection() {
        RefusePulls();
        EndTransfer(At());
        LoseConnection(At().segment);
    }

    void RefuseTheCall() { daemon().Refuse(At().call.method, kFailed, "no", 1); }

    void HangTheCall() {
        daemon().Hang(At().call.method, 1);
        console().SetPatience(Stretched(std::chrono::seconds(60)));
    }

    void ReplyWithAWrongType() { daemon().Reply(At().call.method, Value("(uint32 7,)"), 1); }

    void InvalidateTheProperty() {
        const PromptProperty& property = At().property;
        RefusePulls();
        daemon().Invalidate(property.path, property.interface, property.name);
        Expect(property.output_if_invalidated);
        ExpectNoOutput(At().segment);
    }

    void MistypeTheProperty() {
        const PromptProperty& property = At().property;
        daemon().Notify(property.path, property.interface, property.name, Value("(uint32 7,)"));
        Expect(property.output_on_wrong_type);
        ExpectNoOutput(At().segment);
    }

    // Changes of devices are not reported, those of sessions are.
    void FloodWithNotifications() {
        const std::string last = kPhoneAlias;
        daemon().Flood(kPhonePath, simulator::kDeviceInterface, "Alias", kFlood,
                       [&](std::size_t i) {
                           return g_variant_new_string(i + 1 == kFlood ? last.c_str() : "another");
                       });
        if (InSession(At().id)) {
            std::string notifications;
            for (std::size_t i = 0; i < kFlood; ++i)
                notifications += Notification(
                    At().segment, "Channel Attribute Received: " + std::to_string(i) + "\n");
            daemon().Flood(
                kFirstSession, simulator::kSessionInterface, "Channel", kFlood,
                [](std::size_t i) { return g_variant_new_uint16(static_cast<guint16>(i)); });
            Expect(notifications);
        }
        ExpectNoOutput(At().segment);
    }

    // Continues during the answer. Notifications of a released transfer are not reported.
    void NotifyOfThePreviousTransfer() {
        flood_ = std::async(std::launch::async, [this] {
            daemon().Flood(kFirstTransfer, simulator::kTransferInterface, "Transferred", 2000,
                           [](std::size_t i) { return g_variant_new_uint64(i % 1001); });
        });
    }
    void Nothing() {}

    void ExpectAbort() {
        console().AllowStderr(
            "^terminate called after throwing an instance of 'std::logic_error'$");
        console().AllowStderr("^  what\\(\\):  .*null");
        console().ExpectEndBySignal(SIGABRT);
    }

    // The number of percentages printed before the transfer is released is undefined.
    void ExpectReplacementInAFlood() {
        Await(Normal("Session Connected\n"));
        Await(Normal("Removing: " + PulledPhonebook() + "\n"));
        Await(Prompt(kPhonebookMenu));
        flood_.get();
        ExpectNoOutput(kPhonebookMenu);
    }

  protected:
    const PromptCase& At() const { return *GetParam().prompt; }
    std::string Line() const { return GetParam().fault->in_call ? At().call.line : At().answer; }
    void Run(void (FaultMatrix::*step)()) {
        if (step) (this->*step)();
    }

  private:
    std::string Removed(const std::string& path) const {
        return Notification(At().segment, "Removed " + path + "\n", kRedSequence);
    }

    std::string Found(const std::string& text) const {
        return Notification(At().segment, "Found " + text + "\n");
    }

    // Removing the client releases its session, whose transfer deletes its file.
    void ExpectLossOfTheDaemon() {
        std::vector<std::string> messages = {Removed(kClient), Removed(kPhonePath)};
        if (At().HasTransfer())
            messages.push_back(Notification(At().segment, "Removing: " + PulledPhonebook() + "\n"));
        ExpectInAnyOrder(messages);
    }
    // "Pull" is called even after a loss of connection: makes it fail with a fixed error.
    void RefusePulls() { daemon().Refuse("Pull", kFailed, "no"); }

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

// Outputs, with placeholders such as "<output>" for texts of the prompt: see Expanded().

const std::string kAccepted = "<output>";
const std::string kLost = "<lost>" + Prompt();
// The client does not know that the session is closed, and removes it.
const std::string kRemovalRefused =
    Red("Remove Session failed GDBus.Error:com.veltrisonix.Error.DoesNotExist: No such session: " +
        std::string(kFirstSession) + "\n");
// The filter menu before this pull does not check the session.
const std::string kPullRefused = Red("Remote Call failed: " + kRefusedCall + "\n") + kClientGone;
const std::string kNoStatus = Normal("Transfer Status: \n") + Prompt(kTransferMenu);

std::string CallFailure(const std::string& message) {
    return Red("<failure>" + message + "\n") + "<after failure>";
}

std::string Expanded(std::string text, const PromptCase& prompt) {
    const std::pair<const char*, std::string> texts[] = {
        {"<output>", prompt.output},        {"<lost>", prompt.lost},
        {"<failure>", prompt.call.failure}, {"<after failure>", Prompt(prompt.call.next)},
        {"<method>", prompt.call.method},   {"<reply type>", prompt.call.reply_type}};
    for (const auto& [name, value] : texts)
        text = std::regex_replace(text, std::regex(name), value);
    return text;
}

const Names kCredentials = {"UserId", "Password"};
const Names kOutsideSessions = {"MainMenu", "DeviceChoice", "UserId", "Password"};
const Names kWithoutCalls = {"Location", "Format",   "Order",  "Field",
                             "Selector", "MaxCount", "Offset", "SearchField"};
const Names kPulls = {"PullAllFilters", "PullFilters"};
const Names kAllPrompts = {};

Expectation Impossible(const Names& faults, const Names& prompts, const char* reason) {
    return {faults, prompts, "", Sends::kNothing, nullptr, reason};
}

// The first match applies.
const Expectation kExpectations[] = {
    {{"DaemonDisconnects", "ClientRemoved"}, {"MainMenu"}, kNoClient + Prompt()},
    {{"DaemonDisconnects", "ClientRemoved"}, kAllPrompts, kLost},
    {{"DaemonRestarts", "ClientReplaced"}, kOutsideSessions, kAccepted, Sends::kItsCall},
    {{"DaemonRestarts", "ClientReplaced"}, kAllPrompts, kLost},

    {{"DeviceRemoved"}, {"MainMenu"}, DeviceList({}) + Prompt()},
    {{"DeviceRemoved"}, {"DeviceChoice"}, Red("Invalid Client selected\n") + Prompt()},
    {{"DeviceRemoved"}, kCredentials, kAccepted, Sends::kItsCall},
    Impossible({"SessionClosed", "ConnectionLost"}, kOutsideSessions, "no session is open here"),
    {{"DeviceRemoved", "SessionClosed"},
     {"PullFilters"},
     kPullRefused + kRemovalRefused + Prompt(),
     Sends::kItsCall},
    {{"DeviceRemoved", "SessionClosed"}, kAllPrompts, "<lost>" + kRemovalRefused + Prompt()},
    {{"ConnectionLost"}, {"PullFilters"}, kPullRefused + Prompt(), Sends::kItsCall},
    {{"ConnectionLost"},
     {"TransferMenu"},
     "<lost>" + Normal("Removing: <directory>/phonebook.vcf\n") + Prompt()},
    {{"ConnectionLost"}, kAllPrompts, kLost},

    Impossible({"CallRefused", "CallHangs", "ReplyOfWrongType"}, kWithoutCalls,
               "no call is made here"),
    {{"CallRefused"}, kAllPrompts, CallFailure(kRefusedCall), Sends::kItsCall},
    {{"CallHangs"}, kAllPrompts, CallFailure("Timeout was reached"), Sends::kItsCall},
    {{"ReplyOfWrongType"},
     kAllPrompts,
     CallFailure("Method “<method>” returned type “(u)”, but expected “<reply type>”"),
     Sends::kItsCall},

    Impossible({"PropertyInvalidated", "PropertyOfWrongType"}, kCredentials,
               "the client object has no properties"),
    {{"PropertyInvalidated"}, {"MainMenu"}, DeviceList({"00:1B:DC:07:31:9A | Unknown"}) + Prompt()},
    // CreateSession requires an address: a daemon that provides none is broken.
    {{"PropertyInvalidated"}, {"DeviceChoice"}, "", Sends::kNothing, &FaultMatrix::ExpectAbort},
    {{"PropertyInvalidated"}, {"TransferMenu"}, kNoStatus},
    {{"PropertyInvalidated"}, {"PullFilters"}, kPullRefused + Prompt(), Sends::kItsCall},
    {{"PropertyInvalidated"}, kAllPrompts, kLost},
    {{"PropertyOfWrongType"}, kAllPrompts, kAccepted, Sends::kItsCall},
    {{"PropertiesMissing", "PropertiesOfWrongType"},
     {"MainMenu"},
     DeviceList({"00:1B:DC:07:31:9A | Unknown"}) + Prompt()},
    {{"PropertiesMissing", "PropertiesOfWrongType"},
     {"DeviceChoice"},
     UnknownSession("Connected") + Prompt(kPhonebookMenu),
     Sends::kItsCall},
    {{"PropertiesMissing", "PropertiesOfWrongType"}, {"TransferMenu"}, kNoStatus},
    {{"PropertiesMissing", "PropertiesOfWrongType"}, kAllPrompts, kAccepted, Sends::kItsCall},

    {{"EmptyTransferPath"}, kPulls, Prompt(kTransferMenu), Sends::kItsCall},
    {{"EmptyTransferPath"}, {"TransferMenu"}, kNoStatus},
    Impossible({"EmptyTransferPath"}, kAllPrompts, "no pull is made here"),
    {{"NotificationFlood"}, kAllPrompts, kAccepted, Sends::kItsCall},
    {{"TransferReplaced"},
     {"DeviceChoice"},
     "",
     Sends::kItsCall,
     &FaultMatrix::ExpectReplacementInAFlood},
    {{"TransferReplaced"},
     {"PullAllFilters", "PullFilters", "TransferMenu"},
     kAccepted,
     Sends::kItsCall},
    Impossible({"TransferReplaced"}, kAllPrompts, "no transfer replaces another here"),
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
    Run(fault->prepare);
    Start();
    console().AllowStderr(kWrongTypeWarning);
    ReachBase(*prompt);
    Run(fault->begin);
    Open(*prompt);
    Run(fault->inject);

    const std::size_t calls = CountCalls(prompt->call.method);
    Type(Line());
    if (expected->ending) {
        Run(expected->ending);
    } else {
        ExpectOutput(Expanded(expected->output, *prompt));
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
