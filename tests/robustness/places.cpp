#include "robustness/places.h"

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

// The calls besides those in front of which there is a filter menu.
struct CallRow {
    Id id;
    PlaceCall call;
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

PlaceCall CallAt(Id id) {
    for (const CallRow& row : kCalls)
        if (row.id == id) return row.call;
    for (const Operation& operation : FilteredOperations())
        if (operation.filters == id)
            return {"d",         operation.method,   operation.reply_type,
                    kCallFailed, Id::kPhonebookMenu, operation.reply};
    return {};
}

PlaceProperty PropertyAt(Id id) {
    if (id == Id::kMain) return {kPhonePath, simulator::kDeviceInterface, "Alias", "", ""};
    if (id == Id::kDevice) return {kPhonePath, simulator::kDeviceInterface, "Address", "", ""};
    if (id == Id::kTransfer)
        return {kFirstTransfer, simulator::kTransferInterface, "Status",
                Notice(kTransferMenu, "Status Attribute Received: Unknown\n"),
                Notice(kTransferMenu, "Status Attribute Received: queued\n")};
    if (!InSession(id)) return {};
    return {kFirstSession, simulator::kSessionInterface, "ConnectionState", "", ""};
}

// What is printed for the accepted answer, up to the next prompt's question.
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

// From each menu the next key is read, which quits or, in a filter menu, is refused.
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
    return Asking(next) + EndOfInputAt(next);
}

std::string NonsenseAt(Id id) {
    const PromptRow& row = RowOf(id);
    if (row.asks == Asks::kKey) return kInvalidSelection + Prompt(id);
    if (row.asks == Asks::kNumber) return kInvalidValue + Prompt(id);
    if (id == Id::kHandle) return EndOfInputAt(id);
    return Asking(NextAfter(row, row.answer));
}

Place MakePlace(const PromptRow& row) {
    const Id next = NextAfter(row, row.answer);
    const bool enters = row.move == Move::kGo;
    Place place = {
        row,
        WayTo(row.id),
        ResultAt(row.id) + (enters ? Asking(next) : Prompt(next)),
        LostAt(row.id),
        NonsenseAt(row.id),
        EndOfInputAt(row.id),
        row.asks == Asks::kText ? Asking(next) + EndOfInputAt(next) : EndOfInputAt(row.id),
        CallAt(row.id),
        PropertyAt(row.id)};
    place.leaves_loss_to_its_call = row.id == Id::kPullFilters;
    // There is a session to remove.
    if (row.id == Id::kMain)
        place.opening = {{Id::kMain, "c", Id::kDevice},
                         {Id::kDevice, "0", Id::kPhonebookMenu},
                         {Id::kPhonebookMenu, "x", Id::kMain}};
    return place;
}

std::vector<Place> MakePlaces() {
    std::vector<Place> places;
    for (const PromptRow& row : Prompts())
        if (row.id != Id::kCancelledTransfer) places.push_back(MakePlace(row));
    return places;
}

}  // namespace

const std::vector<Place>& Places() {
    static const std::vector<Place> places = MakePlaces();
    return places;
}

void PlaceTest::StartPlaceDaemon(const Place& place) {
    StartDaemon().AddDevice(kPhonePath, kPhoneAddress, kPhoneAlias);
    daemon().SetPullContent(std::string(1000, 'x'));
    daemon().Reply("ListFilterFields", Value(FilterFieldsReply()));
    if (!place.call.reply.empty()) daemon().Reply(place.call.method, Value(place.call.reply));
}

void PlaceTest::ReachBase(const Place& place, Here here) {
    if (InSession(place.id)) OpenSession(0, here);
    if (NeedsSelection(place.id)) SelectPhonebook(0, 0, here);
}

void PlaceTest::Open(const Place& place, Here here) {
    for (const Answer& answer : place.opening) {
        Type(answer.line, here);
        Await(Prompt(answer.next), here);
    }
}

void PlaceTest::Reach(const Place& place, const ConsoleOptions& options, Here here) {
    StartPlaceDaemon(place);
    Start(options, here);
    ReachBase(place, here);
    Open(place, here);
}

void PlaceTest::EndTransfer(const Place& place, Here here) {
    if (place.HasTransfer()) daemon().AbortTransfer(kFirstTransfer);
    ExpectEndOfTransfer(place, here);
}

void PlaceTest::ExpectEndOfTransfer(const Place& place, Here here) {
    if (place.HasTransfer())
        Expect(Notice(place.segment, "Status Attribute Received: error\n"), here);
}

std::string PlaceTest::Located(std::string output) const {
    const std::string mark = "<directory>";
    for (std::size_t at = output.find(mark); at != output.npos; at = output.find(mark))
        output.replace(at, mark.size(), directory().Path());
    return output;
}

void PlaceTest::ExpectOutput(const std::string& output, Here here) {
    Expect(Located(output), here);
}

void PlaceTest::ExpectInAnyOrder(const std::vector<std::string>& messages, Here here) {
    const std::size_t before = console().Consumed().size();
    std::size_t length = 0;
    for (const std::string& message : messages) length += message.size();
    AwaitAll(messages, here);
    if (console().Consumed().size() != before + length)
        FailTest(here, "other output came between: " + console().Consumed().substr(before));
}

std::vector<const Place*> PlacesThat(bool (*condition)(const Place&)) {
    std::vector<const Place*> places;
    for (const Place& place : Places())
        if (condition(place)) places.push_back(&place);
    return places;
}

std::string NameOfPlace(const testing::TestParamInfo<const Place*>& place) {
    return place.param->name;
}

void PrintTo(const Place* place, std::ostream* stream) {
    *stream << place->name;
}

}  // namespace morvane_test
