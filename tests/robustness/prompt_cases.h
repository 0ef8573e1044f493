#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/conversation.h"
#include "support/menus.h"

namespace morvane_test {

/// The first session and transfer of a daemon.
inline constexpr char kFirstSession[] = "/com/veltrisonix/obex/client/session0";
inline constexpr char kFirstTransfer[] = "/com/veltrisonix/obex/client/session0/transfer0";

/// The call that an answer makes.
struct AnswerCall {
    std::string line;        ///< the answer
    std::string method;      ///< empty: no answer makes any
    std::string reply_type;  ///< of its reply
    std::string failure;     ///< what the tool prints before the bus's message if it fails
    PromptId next = {};      ///< where it ends then
    std::string reply = {};  ///< what the daemon shall reply; empty: it finds one by itself
};

/// What the prompt depends on, and what the tool prints when that changes.
struct PromptProperty {
    std::string path;
    std::string interface;
    std::string name;  ///< empty: nothing
    std::string output_if_invalidated;
    std::string output_on_wrong_type;
};

/// A prompt, and what comes of its answers. Outputs end with the prompt that is displayed then;
/// "<directory>" in them is replaced by the directory of the pulled files.
struct PromptCase : PromptRow {
    std::vector<Answer> opening;  ///< leads here from the main menu or the phone book menu
    std::string output;           ///< of `answer`
    std::string lost;             ///< printed if what it needs has gone; empty: it needs nothing
    std::string invalid_answer_output;  ///< printed for a line that means nothing here
    std::string end_of_input;           ///< printed at the end of input, up to the last prompt
    std::string unterminated;  ///< as `end_of_input`, after `answer` without an end of line
    AnswerCall call;
    PromptProperty property;
    /// Prints nothing when the session is lost: the call is made and fails.
    bool reports_loss_in_its_call = false;

    [[nodiscard]] bool HasTransfer() const { return property.path == kFirstTransfer; }
};

/// All of them.
const std::vector<PromptCase>& PromptCases();

/// A conversation that is led to a prompt.
class PromptCaseTest : public ConversationTest {
  protected:
    /// A daemon with the phone, whose pulls bring 1000 bytes and whose answers are fixed.
    void StartCaseDaemon(const PromptCase&prompt);
    /// From the main menu.
    void ReachBase(const PromptCase&prompt, Here here = Here::Now());
    /// From the base.
    void Open(const PromptCase&prompt, Here here = Here::Now());
    /// All of the above.
    void Reach(const PromptCase&prompt, const ConsoleOptions& options = {},
               Here here = Here::Now());

    /// Where there is a transfer, ends it, as the daemon does when its session goes; a session that
    /// is removed later then says nothing of it.
    void EndTransfer(const PromptCase&prompt, Here here = Here::Now());
    void ExpectEndOfTransfer(const PromptCase&prompt, Here here = Here::Now());

    /// As `Expect`, with the directory in its prompt.
    void ExpectOutput(const std::string& output, Here here = Here::Now());
    [[nodiscard]] std::string Located(std::string output) const;

    /// Exactly these messages come next, in any order.
    void ExpectInAnyOrder(const std::vector<std::string>& messages, Here here = Here::Now());
};

/// A conversation at the prompt that is the test's parameter. A pointer, because each process, which
/// runs one test, makes several copies of every parameter of all tests.
class EachPromptTest : public PromptCaseTest,
                       public testing::WithParamInterface<const PromptCase*> {
  protected:
    static const PromptCase& prompt() { return *GetParam(); }
};

/// Parameters for `EachPromptTest`, and the names of its tests.
std::vector<const PromptCase*> PromptCasesWith(bool (*condition)(const PromptCase&));
std::string NameOfPrompt(const testing::TestParamInfo<const PromptCase*>& prompt);
void PrintTo(const PromptCase*prompt, std::ostream* stream);

}  // namespace morvane_test
