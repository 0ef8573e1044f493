#include "support/conversation.h"

#include "support/bus_monitor.h"

#include <algorithm>
#include <iostream>

namespace morvane_test {
namespace {

const std::string kProbePath = "/com/veltrisonix/hci0/dev_probe";
constexpr char kProbeAddress[] = "00:00:00:00:00:00";

}  // namespace

simulator::Daemon& ConversationTest::StartDaemon(simulator::Options options) {
    if (options.directory.empty()) options.directory = directory_.Path();
    return daemon_.emplace(bus_.Address(), options);
}

Console& ConversationTest::Launch(ConsoleOptions options) {
    if (options.bus_address.empty()) options.bus_address = bus_.Address();
    if (options.directory.empty()) options.directory = directory_.Path();
    return consoles_.emplace_back(options);
}

void ConversationTest::Start(ConsoleOptions options, Here here) {
    if (!daemon_) StartDaemon().AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
    Launch(std::move(options));
    // The tool reports the objects that exist at the start together, before the removal of the
    // probe. On a slow machine it does so after the prompt, which is then redrawn.
    daemon_->AddDevice(kProbePath, kProbeAddress, "Probe");
    AwaitAll({Banner(), "Found Device " + kProbePath + "\n"}, here);
    daemon_->RemoveDevice(kProbePath);
    Await("Removed " + kProbePath + "\n", here);
    Await(Red(" > "), here);
    ExpectNoOutput("", here);
}

void ConversationTest::OpenSession(unsigned device, Here here) {
    if (consoles_.empty()) Start({}, here);
    ChooseDevice(device, here);
    Await(Prompt(kPhonebookMenu), here);
}

void ConversationTest::ChooseDevice(unsigned device, Here here) {
    EnterAndAwait("c", ValuePrompt("/Select Device"), here);
    Type(std::to_string(device), here);
}

void ConversationTest::OpenSelectedSession(Here here) {
    OpenSession(0, here);
    SelectPhonebook(0, 0, here);
}

void ConversationTest::OpenPrompt(PromptId id, Here here) {
    if (consoles_.empty()) Start({}, here);
    if (InSession(id)) OpenSession(0, here);
    if (NeedsSelection(id)) SelectPhonebook(0, 0, here);
    for (const Answer& answer : PathTo(id)) EnterAndAwait(answer.line, Prompt(answer.next), here);
}

void ConversationTest::SelectPhonebook(unsigned location, unsigned phonebook, Here here) {
    EnterAndAwait("s", ValuePrompt("/Select Location"), here);
    EnterAndAwait(std::to_string(location), ValuePrompt("/Select Phonebook"), here);
    Enter(std::to_string(phonebook),
          Normal("Phonebook selected successfully\n") + Prompt(kPhonebookMenu), here);
}

void ConversationTest::Begin(const Operation& operation, Here here) {
    for (const std::string& line : operation.lines) {
        if (&line != &operation.lines.front()) Await(Red(" ? "), here);
        Type(line, here);
    }
}

void ConversationTest::PullAll(const std::string& content, Here here) {
    daemon_->SetPullContent(content);
    Type("a", here);
    PullUnfiltered(here);
}

void ConversationTest::Pull(const std::string& handle, const std::string& content, Here here) {
    daemon_->SetPullContent(content);
    EnterAndAwait("p", ValuePrompt("/vCard Handle"), here);
    Type(handle, here);
    PullUnfiltered(here);
}

void ConversationTest::PullUnfiltered(Here here) {
    Await(Prompt(kFilterMenu), here);
    EnterAndAwait("d", Prompt(kTransferMenu), here);
}

std::string ConversationTest::Session() const {
    return daemon_->Sessions().back();
}

std::string ConversationTest::Transfer() const {
    return daemon_->Transfers().back();
}

void ConversationTest::ExpectCall(const std::string& method, const std::string& body, Here here) {
    const auto call = daemon_->AwaitCall(method, Patience());
    if (!call) FailTest(here, "no call: " + method + body);
    if (g_variant_equal(Value(call->body), Value(body)) == FALSE)
        FailTest(here, "the call was " + Describe(*call) + "; expected: " + method + body);
}

std::size_t ConversationTest::CountCalls(const std::string& method) const {
    const std::vector<simulator::Call> calls = daemon_->Calls();
    return static_cast<std::size_t>(
        std::count_if(calls.begin(), calls.end(),
                      [&](const simulator::Call& call) { return call.method == method; }));
}

void ConversationTest::AddDevice(const std::string& path, const std::string& address,
                                 const std::string& alias, const std::string& segment, Here here) {
    daemon_->AddDevice(path, address, alias);
    Expect(Notification(segment, "Found Device " + path + "\n"), here);
    ExpectNoOutput(segment, here);
}

void ConversationTest::RemoveDevice(const std::string& path, const std::string& segment,
                                    Here here) {
    daemon_->RemoveDevice(path);
    Expect(Notification(segment, "Removed " + path + "\n", kRedSequence), here);
}

void ConversationTest::HangInCall(Here here) {
    daemon_->Hang("SetUserId");
    EnterAndAwait("u", ValuePrompt("/User Id"), here);
    Type("me", here);
    ExpectCall("SetUserId", "('me',)", here);
}

void ConversationTest::RemoveClient(const std::string& segment, Here here) {
    daemon_->RemoveClient();
    Expect(Notification(segment, "Removed " + kClient + "\n", kRedSequence), here);
}

void ConversationTest::ReturnClient(const std::string& segment, Here here) {
    daemon_->AddClient();
    Expect(Notification(segment, "Found Client " + kClient + "\n"), here);
    ExpectNoOutput(segment, here);
}

void ConversationTest::LoseConnection(const std::string& segment, Here here) {
    daemon_->SetConnectionState(Session(), 0);
    ExpectNoOutput(segment, here);
}

void ConversationTest::ExpectNoOutput(const std::string& segment, Here here) {
    daemon_->AddDevice(kProbePath, kProbeAddress, "Probe");
    Expect(Notification(segment, "Found Device " + kProbePath + "\n"), here);
    RemoveDevice(kProbePath, segment, here);
}

void ConversationTest::Interrupt(Here here) {
    AwaitEndOfMainLoop([this] { console().Interrupt(); }, here);
}

void ConversationTest::PressControlC(Here here) {
    AwaitEndOfMainLoop([this] { console().TypeBytes("\x03"); }, here);
}

void ConversationTest::AwaitEndOfMainLoop(const std::function<void()>& cause, Here here) {
    // The tool releases the object manager right after its main loop.
    BusMonitor monitor(bus_.Address(), "RemoveMatch", "org.freedesktop.DBus.ObjectManager");
    cause();
    monitor.AwaitCall(here);
}

void ConversationTest::TearDown() {
    for (Console& console : consoles_) console.Finish();
    if (!HasFailure()) return;
    for (Console& console : consoles_) std::cout << console.FailureReport();
    std::cout << "---- Calls that the daemon received\n";
    if (!daemon_) return;
    for (const simulator::Call& call : daemon_->Calls()) std::cout << Describe(call) << '\n';
}

}  // namespace morvane_test
