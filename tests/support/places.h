#pragma once

#include <string>
#include <vector>

#include "support/conversation_test.h"

namespace morvane_test {

/// The first session and transfer of a daemon.
inline constexpr char kFirstSession[] = "/com/veltrisonix/obex/client/session0";
inline constexpr char kFirstTransfer[] = "/com/veltrisonix/obex/client/session0/transfer0";

/// Where a conversation stands before it is led to a place.
enum class Base {
    kMainMenu,
    kSession,   ///< the phone book menu
    kSelected,  ///< the phone book menu, with a phone book selected
};

/// What the operator is asked for there.
enum class Asks { kKey, kNumber, kText };

struct Step {
    std::string line;
    std::string prompt;  ///< what then stands
};

/// The call that an answer makes.
struct PlaceCall {
    std::string line;     ///< the answer
    std::string method;   ///< empty: no answer makes any
    std::string reply;    ///< the type of its reply
    std::string failure;  ///< what the tool says before the bus's message if it fails
    std::string segment;  ///< of the prompt at which it ends then
    std::string answer;   ///< what the daemon shall answer; empty: it finds one by itself
};

/// What the place rests on, and what the tool prints when that changes.
struct PlaceProperty {
    std::string path;
    std::string interface;
    std::string name;  ///< empty: nothing
    std::string notice_of_absence;
    std::string notice_of_wrong_type;
};

/// A place where the operator is asked something. Outputs end with the prompt that stands then;
/// "<directory>" in them stands for the directory of the pulled files.
struct Place {
    std::string name;
    Base base;
    std::vector<Step> opening;  ///< leads from the base here
    std::string segment;        ///< of its prompt
    Asks asks;
    std::string line;          ///< an answer
    std::string output;        ///< what it brings if all is well
    std::string lost;          ///< said if what it needs has gone; empty: it needs nothing
    std::string nonsense;      ///< what comes of a line that means nothing here
    std::string end_of_input;  ///< what comes of the end of input, up to the last prompt
    PlaceCall call;
    PlaceProperty property;
    /// Says nothing when the session is lost: the call is made and fails.
    bool leaves_loss_to_its_call = false;

    [[nodiscard]] std::string StandingPrompt() const {
        return asks == Asks::kKey ? Prompt(segment) : ValuePrompt(segment);
    }
    [[nodiscard]] bool HasTransfer() const { return property.path == kFirstTransfer; }
    [[nodiscard]] bool InSession() const { return base != Base::kMainMenu; }
};

/// All of them.
const std::vector<Place>& Places();

/// A conversation that is led to a place.
class PlaceTest : public ConversationTest {
  protected:
    /// A daemon with the phone, whose pulls bring 1000 bytes and whose answers are fixed.
    void StartPlaceDaemon(const Place& place);
    /// From the main menu.
    void ReachBase(const Place& place, Here here = Here::Now());
    /// From the base.
    void Open(const Place& place, Here here = Here::Now());
    /// All of the above.
    void Reach(const Place& place, const ConsoleOptions& options = {}, Here here = Here::Now());

    /// Where there is a transfer, ends it, as the daemon does when its session goes; a session that
    /// is removed later then says nothing of it.
    void EndTransfer(const Place& place, Here here = Here::Now());
    void ExpectEndOfTransfer(const Place& place, Here here = Here::Now());

    /// As `Expect`, with the directory in its place.
    void ExpectOutput(const std::string& output, Here here = Here::Now());
    [[nodiscard]] std::string Located(std::string output) const;

    /// Exactly these messages come next, in any order.
    void ExpectInAnyOrder(const std::vector<std::string>& messages, Here here = Here::Now());
};

}  // namespace morvane_test
