#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/glib_ptr.h"
#include "simulator/daemon.h"
#include "support/console.h"
#include "support/menus.h"
#include "support/messages.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"
#include "support/value.h"

namespace morvane_test {

/// The phone that `Start` adds.
inline constexpr char kPhonePath[] = "/com/veltrisonix/hci0/dev_00_1B_DC_07_31_9A";
inline constexpr char kPhoneAddress[] = "00:1B:DC:07:31:9A";
inline constexpr char kPhoneAlias[] = "Workbench Phone";
inline const std::string kClient = simulator::kClientPath;

// Messages that several tests expect.
inline const std::string kNoClient = Red("No Client available, start daemon.\n");
inline const std::string kClientGone = Red("Client Proxy is invalid\n");
inline const std::string kInvalidSelection = Red("Invalid Selection\n");
inline const std::string kRefused =
    Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: enough\n");
inline const std::string kPhonebookPrompt = Prompt(kPhonebookMenu);

/// A test with its own bus, simulated daemon and console.
///
/// After the test body the input of the tool is closed; the tool must exit with status 0, without
/// undeclared lines on standard error. A failure is followed by the complete terminal output,
/// standard error and all calls that the daemon received.
class ConversationTest : public testing::Test {
  protected:
    /// Starts the daemon. By default it has the client object and no phones, moves transfers only
    /// on command and sends no notifications by itself. Files are created in the test's directory.
    simulator::Daemon& StartDaemon(simulator::Options options = simulator::Options::Scripted());
    simulator::Daemon& daemon() { return *daemon_; }

    /// Starts the tool without waiting for output. May be called again after the tool has ended.
    Console& Launch(ConsoleOptions options = {});

    /// Starts the tool and waits until it has found all objects and displays the main prompt.
    /// Starts the daemon with one phone if none is running.
    void Start(ConsoleOptions options = {}, Here here = Here::Now());
    /// Calls Start if needed, then opens a session to the device with this number. Ends at the
    /// prompt of the phone book menu.
    void OpenSession(unsigned device = 0, Here here = Here::Now());
    /// At the main prompt: types "c" and the number of the device. The result is the next output.
    void ChooseDevice(unsigned device = 0, Here here = Here::Now());
    /// OpenSession, then selects its first phone book.
    void OpenSelectedSession(Here here = Here::Now());
    /// Calls Start if needed, then opens this prompt by the shortest path.
    void OpenPrompt(PromptId id, Here here = Here::Now());
    /// Starts and ends at the phone book menu.
    void SelectPhonebook(unsigned location = 0, unsigned phonebook = 0, Here here = Here::Now());
    /// Types the operation's lines, each at its prompt. The next output is the filter menu or the
    /// result.
    void Begin(const Operation& operation, Here here = Here::Now());
    /// Pulls without filters, from the phone book menu to the transfer menu's prompt. The daemon
    /// writes `content` to the file.
    void PullAll(const std::string& content, Here here = Here::Now());
    void Pull(const std::string& handle, const std::string& content, Here here = Here::Now());

    /// The path of the newest session or transfer.
    std::string Session() const;
    std::string Transfer() const;
    /// Path of the file that the daemon writes for `PullAll` or `Pull`.
    std::string PulledPhonebook() const { return directory_.File("phonebook.vcf"); }
    std::string PulledCard() const { return directory_.File("card.vcf"); }

    /// Waits for the next call of `method` that no earlier `ExpectCall` has consumed, and compares
    /// its body with a GVariant text such as "('int', 'pb')"; with types where they matter:
    /// "({'MaxCount': <uint16 5>},)".
    void ExpectCall(const std::string& method, const std::string& body, Here here = Here::Now());
    /// How often `method` has been called so far.
    std::size_t CountCalls(const std::string& method) const;

    // Add or remove objects of the daemon while the prompt `segment` is displayed. They return when
    // the tool has processed and reported the change.
    void AddDevice(const std::string& path, const std::string& address, const std::string& alias,
                   const std::string& segment = "", Here here = Here::Now());
    void RemoveDevice(const std::string& path, const std::string& segment = "",
                      Here here = Here::Now());
    void RemoveClient(const std::string& segment = "", Here here = Here::Now());
    void ReturnClient(const std::string& segment = "", Here here = Here::Now());
    /// Disconnects the session. The tool prints nothing.
    void LoseConnection(const std::string& segment, Here here = Here::Now());

    /// At the main prompt: makes the tool call a method that returns only after
    /// `daemon().Release()`.
    void HangInCall(Here here = Here::Now());
    /// Waits until the tool has processed everything that the daemon has sent so far, and checks
    /// that it has printed nothing since the last consumed byte: adds and removes a device, whose
    /// messages must be the next output at the prompt `segment`. (The removal is needed: the tool
    /// reports a new object before it has processed it.)
    void ExpectNoOutput(const std::string& segment = "", Here here = Here::Now());

    /// Send SIGINT to the tool, or type Ctrl-C. They return when the tool's main loop has ended;
    /// the menus run until the next answer.
    void Interrupt(Here here = Here::Now());
    void PressControlC(Here here = Here::Now());
    /// Calls `cause`, which ends the main loop, and waits for that.
    void AwaitEndOfMainLoop(const std::function<void()>& cause, Here here = Here::Now());

    Console& console() { return consoles_.back(); }
    PrivateBus& bus() { return bus_; }
    const TemporaryDirectory& directory() const { return directory_; }

    /// At the main prompt: expects exactly these devices, as "address | alias", from "l".
    void ExpectList(const std::vector<std::string>& devices, Here here = Here::Now()) {
        Enter("l", DeviceList(devices) + Prompt(), here);
    }
    /// Types a line and expects this output.
    void Enter(std::string_view line, std::string_view output, Here here = Here::Now()) {
        Type(line, here);
        Expect(output, here);
    }

    /// Types a line and skips the output up to the end of `text`.
    void EnterAndAwait(std::string_view line, std::string_view text, Here here = Here::Now()) {
        Type(line, here);
        Await(text, here);
    }

    // Functions of the console.
    void Type(std::string_view line, Here here = Here::Now()) { console().Type(line, here); }
    void Expect(std::string_view bytes, Here here = Here::Now()) { console().Expect(bytes, here); }
    void Await(std::string_view bytes, Here here = Here::Now()) { console().Await(bytes, here); }
    void AwaitAll(const std::vector<std::string>& texts, Here here = Here::Now()) {
        console().AwaitAll(texts, here);
    }
    /// Expects the exit after an error of the main thread. If that thread is slower than the pause
    /// before the next prompt, the tool displays the prompt and exits at the end of the input.
    void ExpectExitUnlessPrompted(Here here = Here::Now()) {
        console().CloseInput();
        console().ExpectExit(0, Console::Rest::kIgnored, here);
    }
    void ExpectExit(int status, Console::Rest rest = Console::Rest::kNone,
                    Here here = Here::Now()) {
        console().ExpectExit(status, rest, here);
    }

    void TearDown() override;

  private:
    void PullUnfiltered(Here here);

    TemporaryDirectory directory_;
    PrivateBus bus_;
    std::optional<simulator::Daemon> daemon_;
    std::deque<Console> consoles_;
};

}  // namespace morvane_test
