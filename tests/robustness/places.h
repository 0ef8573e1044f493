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
struct PlaceCall {
    std::string line;        ///< the answer
    std::string method;      ///< empty: no answer makes any
    std::string reply_type;  ///< of its reply
    std::string failure;     ///< what the tool prints before the bus's message if it fails
    PromptId next = {};      ///< where it ends then
    std::string reply = {};  ///< what the daemon shall reply; empty: it finds one by itself
};

/// What the prompt depends on, and what the tool prints when that changes.
struct PlaceProperty {
    std::string path;
    std::string interface;
    std::string name;  ///< empty: nothing
    std::string notice_of_absence;
    std::string notice_of_wrong_type;
};

/// A prompt, and what comes of its answers. Outputs end with the prompt that is displayed then;
/// "<directory>" in them is replaced by the directory of the pulled files.
struct Place : PromptRow {
    std::vector<Answer> opening;  ///< leads here from the main menu or the phone book menu
    std::string output;           ///< of `answer`
    std::string lost;             ///< printed if what it needs has gone; empty: it needs nothing
    std::string nonsense;         ///< printed for a line that means nothing here
    std::string end_of_input;     ///< printed at the end of input, up to the last prompt
    std::string unterminated;     ///< as `end_of_input`, after `answer` without an end of line
    PlaceCall call;
    PlaceProperty property;
    /// Prints nothing when the session is lost: the call is made and fails.
    bool leaves_loss_to_its_call = false;

    [[nodiscard]] bool HasTransfer() const { return property.path == kFirstTransfer; }
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

/// A conversation at the place that is the test's parameter. A pointer, because each process, which
/// runs one test, makes several copies of every parameter of all tests.
class EachPlaceTest : public PlaceTest, public testing::WithParamInterface<const Place*> {
  protected:
    static const Place& place() { return *GetParam(); }
};

/// Parameters for `EachPlaceTest`, and the names of its tests.
std::vector<const Place*> PlacesThat(bool (*condition)(const Place&));
std::string NameOfPlace(const testing::TestParamInfo<const Place*>& place);
void PrintTo(const Place* place, std::ostream* stream);

}  // namespace morvane_test
