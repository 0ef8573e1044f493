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

/// The phone that `Start` puts on the bus.
inline constexpr char kPhonePath[] = "/com/veltrisonix/hci0/dev_00_1B_DC_07_31_9A";
inline constexpr char kPhoneAddress[] = "00:1B:DC:07:31:9A";
inline constexpr char kPhoneAlias[] = "Workbench Phone";
inline const std::string kClient = simulator::kClientPath;

// What several tests expect.
inline const std::string kNoClient = Red("No Client available, start daemon.\n");
inline const std::string kClientGone = Red("Client Proxy is invalid\n");
inline const std::string kInvalidSelection = Red("Invalid Selection\n");
inline const std::string kRefused =
    Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: enough\n");
inline const std::string kPhonebookPrompt = Prompt(kPhonebookMenu);

/// A test that holds a conversation with the tool: a bus, a daemon and a console of its own.
///
/// When the test body ends, the tool gets its end of input and must end with status 0, and its
/// standard error must be empty but for what the test declared. A failure is followed by the whole
/// terminal, standard error and all calls that the daemon received.
class ConversationTest : public testing::Test {
  protected:
    /// Starts the daemon. By default it has the client object, no phones, moves transfers only by
    /// hand and announces nothing by itself. Files go to the test's directory unless told
    /// otherwise.
    simulator::Daemon& StartDaemon(simulator::Options options = simulator::Options::Scripted());
    simulator::Daemon& daemon() { return *daemon_; }
    void StopDaemon() { daemon_.reset(); }

    /// Starts the tool and awaits nothing. May be used again when the tool has ended.
    Console& Launch(ConsoleOptions options = {});

    /// The tool stands at the main prompt, all objects found. Starts the daemon with one phone, see
    /// above, if there is none.
    void Start(ConsoleOptions options = {}, Here here = Here::Now());
    /// Start, then a session to the device with this number. Ends at the prompt of the phone book
    /// menu.
    void OpenSession(unsigned device = 0, Here here = Here::Now());
    /// At the main prompt: answers "c" and its question. What comes of it is next.
    void ChooseDevice(unsigned device = 0, Here here = Here::Now());
    /// Start, with a daemon that is this instance and has the phone.
    void StartInstance(const std::string& instance, Here here = Here::Now());
    /// OpenSession, then its first phone book.
    void OpenSelectedSession(Here here = Here::Now());
    /// Start, if need be, and on to this prompt by the shortest way.
    void OpenPrompt(PromptId id, Here here = Here::Now());
    /// From the phone book menu, and back to it.
    void SelectPhonebook(unsigned location = 0, unsigned phonebook = 0, Here here = Here::Now());
    /// Types the operation's lines, each at its prompt. The next output is the filter menu, or the
    /// result.
    void Begin(const Operation& operation, Here here = Here::Now());
    /// From the phone book menu to the transfer menu's prompt, without filters. The daemon's pull
    /// content is `content`.
    void PullAll(const std::string& content, Here here = Here::Now());
    void Pull(const std::string& handle, const std::string& content, Here here = Here::Now());

    /// The path of the newest session or transfer.
    std::string Session() const;
    std::string Transfer() const;
    /// Where the daemon puts the file of `PullAll` and `Pull`.
    std::string PulledPhonebook() const { return directory_.File("phonebook.vcf"); }
    std::string PulledCard() const { return directory_.File("card.vcf"); }

    /// Awaits the next call of `method` that no earlier `ExpectCall` has seen, and compares its
    /// body with a GVariant text such as "('int', 'pb')"; types are written where they matter:
    /// "({'MaxCount': <uint16 5>},)".
    void ExpectCall(const std::string& method, const std::string& body, Here here = Here::Now());
    /// How often `method` has been called so far.
    std::size_t CountCalls(const std::string& method) const;

    // What the daemon has comes and goes while the prompt `segment` stands. The tool has noticed,
    // and said so, when these return.
    void AddDevice(const std::string& path, const std::string& address, const std::string& alias,
                   const std::string& segment = "", Here here = Here::Now());
    void RemoveDevice(const std::string& path, const std::string& segment = "",
                      Here here = Here::Now());
    void RemoveClient(const std::string& segment = "", Here here = Here::Now());
    void ReturnClient(const std::string& segment = "", Here here = Here::Now());
    /// The session loses its connection, of which the tool says nothing by itself.
    void LoseConnection(const std::string& segment, Here here = Here::Now());

    /// At the main prompt: puts the tool into a call, which hangs until `daemon().Release()`.
    void HangInCall(Here here = Here::Now());
    /// Awaits that the tool has dealt with all that the daemon has announced so far, and shows that
    /// nothing has been printed since the last consumed byte: the daemon announces and removes a
    /// device, which must be the very next output under the standing prompt `segment`. (The tool
    /// reports an object before it has looked at it, so the report alone does not tell.)
    void ExpectQuiet(const std::string& segment = "", Here here = Here::Now());

    /// SIGINT to the tool, or Ctrl-C typed by the operator. The tool's main loop has ended when
    /// they return; its menus run until the next answer.
    void Interrupt(Here here = Here::Now());
    void PressControlC(Here here = Here::Now());
    /// `cause` ends the main loop; returns when it has ended.
    void AwaitEndOfMainLoop(const std::function<void()>& cause, Here here = Here::Now());

    Console& console() { return consoles_.back(); }
    PrivateBus& bus() { return bus_; }
    const TemporaryDirectory& directory() const { return directory_; }

    // The console's words, so that a conversation reads as one.
    void Type(std::string_view line, Here here = Here::Now()) { console().Type(line, here); }
    void Expect(std::string_view bytes, Here here = Here::Now()) { console().Expect(bytes, here); }
    void Await(std::string_view bytes, Here here = Here::Now()) { console().Await(bytes, here); }
    void AwaitAll(const std::vector<std::string>& texts, Here here = Here::Now()) {
        console().AwaitAll(texts, here);
    }
    void ExpectExit(int status, Console::Rest rest = Console::Rest::kNone,
                    Here here = Here::Now()) {
        console().ExpectExit(status, rest, here);
    }

    void TearDown() override;

  private:
    std::vector<std::string> FoundMessages() const;
    void PullUnfiltered(Here here);

    TemporaryDirectory directory_;
    PrivateBus bus_;
    std::optional<simulator::Daemon> daemon_;
    std::deque<Console> consoles_;
};

}  // namespace morvane_test
