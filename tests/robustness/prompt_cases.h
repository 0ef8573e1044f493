#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/conversation.h"
#include "support/menus.h"

namespace morvane_test {

/// Paths of the first session and transfer.
inline constexpr char kFirstSession[] = "/com/veltrisonix/obex/client/session0";
inline constexpr char kFirstTransfer[] = "/com/veltrisonix/obex/client/session0/transfer0";

/// The method call that an answer makes.
struct AnswerCall {
    std::string line;        ///< the answer
    std::string method;      ///< empty: no call
    std::string reply_type;  ///< signature of the reply
    std::string failure;     ///< printed before the error message
    PromptId next = {};      ///< prompt after a failure
    std::string reply = {};  ///< reply of the daemon; empty: its default
};

/// A property that the prompt depends on, and the output when it changes.
struct PromptProperty {
    std::string path;
    std::string interface;
    std::string name;  ///< empty: no property
    std::string output_if_invalidated;
    std::string output_on_wrong_type;
};

/// A prompt and the output for various answers. Outputs end with the next prompt; "<directory>" in
/// them is replaced by the directory of the pulled files.
struct PromptCase : PromptRow {
    std::vector<Answer> opening;        ///< answers in the main or phone book menu that open it
    std::string output;                 ///< output for `answer`
    std::string lost;                   ///< output if the session or client has been lost
    std::string invalid_answer_output;  ///< output for an invalid line
    std::string end_of_input;           ///< output at end of input, up to the exit
    std::string unterminated;           ///< output for `answer` without a newline at end of input
    AnswerCall call;
    PromptProperty property;
    /// The prompt does not report a lost session: its call is made and fails.
    bool reports_loss_in_its_call = false;

    [[nodiscard]] bool HasTransfer() const { return property.path == kFirstTransfer; }
};

/// One for each row of Prompts(), except the cancelled transfer.
const std::vector<PromptCase>& PromptCases();

/// A conversation test that starts at a prompt.
class PromptCaseTest : public ConversationTest {
  protected:
    /// Starts a daemon with the phone, pulls of 1000 bytes and fixed replies.
    void StartCaseDaemon(const PromptCase& prompt);
    /// Opens the menu where `opening` starts, from the main menu.
    void ReachBase(const PromptCase& prompt, Here here = Here::Now());
    /// Opens the prompt from that menu.
    void Open(const PromptCase& prompt, Here here = Here::Now());
    /// Calls StartCaseDaemon(), Start(), ReachBase() and Open().
    void Reach(const PromptCase& prompt, const ConsoleOptions& options = {},
               Here here = Here::Now());

    /// Aborts the transfer, if there is one, as the daemon does when the session is closed, so that
    /// closing the session then sends no notification.
    void EndTransfer(const PromptCase& prompt, Here here = Here::Now());
    void ExpectEndOfTransfer(const PromptCase& prompt, Here here = Here::Now());

    /// Replaces "<directory>", then calls `Expect`.
    void ExpectOutput(const std::string& output, Here here = Here::Now());
    [[nodiscard]] std::string Located(std::string output) const;

    /// Expects exactly these messages as the next output, in any order.
    void ExpectInAnyOrder(const std::vector<std::string>& messages, Here here = Here::Now());
};

/// A conversation test with a prompt as its parameter: a pointer, because GoogleTest copies all
/// parameters of all tests several times in each process.
class EachPromptTest : public PromptCaseTest,
                       public testing::WithParamInterface<const PromptCase*> {
  protected:
    static const PromptCase& prompt() { return *GetParam(); }
};

/// Parameters for `EachPromptTest`, and the names of its tests.
std::vector<const PromptCase*> PromptCasesWith(bool (*condition)(const PromptCase&));
std::string NameOfPrompt(const testing::TestParamInfo<const PromptCase*>& prompt);
void PrintTo(const PromptCase* prompt, std::ostream* stream);

}  // namespace morvane_test
