#include "support/places.h"

namespace morvane_test {
namespace {

constexpr char kProfile[] = "/Phonebook Menu";
constexpr char kFilters[] = "/Filter Menu";
constexpr char kTransfers[] = "/Transfer Menu";

const std::string kClientLost = Red("Client Proxy is invalid\n");
const std::string kSessionLost = Red("Phonebook Access Proxy is invalid\n");
const std::string kInvalidSelection = Red("Invalid Selection\n");
const std::string kInvalidValue = Red("Invalid value\n");
const std::string kInvalidHandle =
    Red("Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'\n");
const std::string kRemoving = Normal("Removing: <directory>/phonebook.vcf\n");
const std::string kCallFailed = "Remote Call failed: ";

const PlaceProperty kNoProperty = {};
const PlaceProperty kState = {kFirstSession, simulator::kSessionInterface, "ConnectionState", "",
                              ""};
const PlaceCall kNoCall = {};

PlaceProperty OfThePhone(const std::string& name) {
    return {kPhonePath, simulator::kDeviceInterface, name, "", ""};
}

std::string ChoicesOf(const std::string& title, const std::vector<std::string>& choices,
                      const std::string& segment) {
    return Heading(title) + Choices(choices) + ValuePrompt(segment);
}

Place MainMenuPlace() {
    return {"MainMenu",
            Base::kMainMenu,
            {{"c", ValuePrompt("/Select Device")}, {"0", Prompt(kProfile)}, {"x", Prompt()}},
            "",
            Asks::kKey,
            "l",
            DeviceList({"00:1B:DC:07:31:9A | Workbench Phone"}) + Prompt(),
            "",
            kInvalidSelection + Prompt(),
            "",
            {"r", "RemoveSession", "()", "Remove Session failed ", "", ""},
            OfThePhone("Alias")};
}

Place DeviceChoice() {
    return {"DeviceChoice",
            Base::kMainMenu,
            {{"c", ValuePrompt("/Select Device")}},
            "/Select Device",
            Asks::kNumber,
            "0",
            OpenedSession(kPhoneAddress) + Prompt(kProfile),
            kClientLost,
            kInvalidValue + ValuePrompt("/Select Device"),
            Red("Invalid Client selected\n") + Prompt(),
            {"0", "CreateSession", "(o)", "Create Session failed ", "", ""},
            OfThePhone("Address")};
}

// A prompt of the main menu for a text that is set on the client object.
Place CredentialPlace(const std::string& name, const std::string& key, const std::string& segment,
                      const PlaceCall& call) {
    return {name,
            Base::kMainMenu,
            {{key, ValuePrompt(segment)}},
            segment,
            Asks::kText,
            call.line,
            Prompt(),
            kClientLost,
            Prompt(),
            Prompt(),
            call,
            kNoProperty};
}

Place ProfileMenu() {
    return {"ProfileMenu",
            Base::kSession,
            {},
            kProfile,
            Asks::kKey,
            "u",
            Normal("Counters updated\n") + Prompt(kProfile),
            kClientLost,
            kInvalidSelection + Prompt(kProfile),
            "",
            {"u", "UpdateVersion", "()", kCallFailed, kProfile, ""},
            kState};
}

Place Location() {
    return {"Location",
            Base::kSession,
            {{"s", ValuePrompt("/Select Location")}},
            "/Select Location",
            Asks::kNumber,
            "0",
            ChoicesOf("Select a Phonebook", {"pb", "cch", "ich", "och", "mch", "spd", "fav"},
                      "/Select Phonebook"),
            kSessionLost,
            kInvalidValue + ValuePrompt("/Select Location"),
            Red("Invalid location selected\n") + Prompt(kProfile),
            kNoCall,
            kState};
}

Place PhoneBook() {
    return {"PhoneBook",
            Base::kSession,
            {{"s", ValuePrompt("/Select Location")}, {"0", ValuePrompt("/Select Phonebook")}},
            "/Select Phonebook",
            Asks::kNumber,
            "0",
            Normal("Phonebook selected successfully\n") + Prompt(kProfile),
            kSessionLost,
            kInvalidValue + ValuePrompt("/Select Phonebook"),
            Red("Invalid phone book selected\n") + Prompt(kProfile),
            {"0", "Select", "()", kCallFailed, kProfile, ""},
            kState};
}

Place Handle() {
    return {"Handle",
            Base::kSelected,
            {{"p", ValuePrompt("/vCard Handle")}},
            "/vCard Handle",
            Asks::kText,
            "1",
            PullFilterMenu() + Prompt(kFilters),
            kSessionLost,
            kInvalidHandle + Prompt(kProfile),
            kInvalidHandle + Prompt(kProfile),
            {"1", "ListFilterFields", "(as)", kCallFailed, kProfile, ""},
            kState};
}

// One of the filter menus: which call it stands before, and what its answer brings.
Place FilterMenuPlace(const std::string& name, const std::vector<Step>& opening,
                      const std::string& output, const PlaceCall& call) {
    std::vector<Step> steps = opening;
    steps.back().prompt = Prompt(kFilters);
    return {name,
            Base::kSelected,
            steps,
            kFilters,
            Asks::kKey,
            "d",
            output,
            kSessionLost,
            kInvalidSelection + Prompt(kFilters),
            kInvalidSelection + Prompt(kProfile),
            call,
            kState};
}

// A pull whose answer is a transfer that the daemon says little of.
Place PullPlace(const std::string& method, const std::vector<Step>& opening) {
    return FilterMenuPlace(method + "Filters", opening,
                           Lines({"Status: queued", "Size: 5"}) + Prompt(kTransfers),
                           {"d", method, "(oa{sv})", kCallFailed, kProfile,
                            "(objectpath '/t/1', {'Status': <'queued'>, 'Size': <uint64 5>})"});
}

// One of the filter menus' prompts: the menu's key, then the prompt's key and an answer.
struct FilterPromptRow {
    std::string name;
    std::string menu_key;
    std::string key;
    std::string segment;
    std::string line;
    std::string error;
};

Place FilterPromptPlace(const FilterPromptRow& row) {
    const std::string prompt = ValuePrompt(row.segment);
    return {row.name,
            Base::kSelected,
            {{row.menu_key, Prompt(kFilters)}, {row.key, prompt}},
            row.segment,
            Asks::kNumber,
            row.line,
            Prompt(kFilters),
            kSessionLost,
            kInvalidValue + prompt,
            Red(row.error + "\n") + Prompt(kFilters) + kInvalidSelection + Prompt(kProfile),
            kNoCall,
            kState};
}

const FilterPromptRow kFilterPrompts[] = {
    {"Format", "a", "f", "/Select Format", "1", "Invalid format selected"},
    {"Order", "l", "r", "/Select Order", "1", "Invalid order selected"},
    {"Field", "a", "s", "/Select Filter Field", "0", "Invalid filter selected"},
    {"Selector", "m", "l", "/Select vCard Selector Filter", "1", "Invalid vCard selector selected"},
    {"MaxCount", "l", "c", "/MaxCount", "5", "Invalid MaxCount entered"},
    {"Offset", "a", "o", "/Offset", "5", "Invalid Offset entered"},
};

Place SearchField() {
    return {"SearchField",
            Base::kSelected,
            {{"o", ValuePrompt("/Select Search Field")}},
            "/Select Search Field",
            Asks::kNumber,
            "0",
            TextBox("Enter search value string") + ValuePrompt("/Search Value"),
            kSessionLost,
            kInvalidValue + ValuePrompt("/Select Search Field"),
            Red("Invalid search field selected\n") + Prompt(kProfile),
            kNoCall,
            kState};
}

Place SearchValue() {
    return {"SearchValue",
            Base::kSelected,
            {{"o", ValuePrompt("/Select Search Field")}, {"0", ValuePrompt("/Search Value")}},
            "/Search Value",
            Asks::kText,
            "Ada",
            ListFilterMenu() + Prompt(kFilters),
            kSessionLost,
            ListFilterMenu() + Prompt(kFilters),
            ListFilterMenu() + Prompt(kFilters) + kInvalidSelection + Prompt(kProfile),
            {"Ada", "ListFilterFields", "(as)", kCallFailed, kProfile, ""},
            kState};
}

Place TransferMenuPlace() {
    return {"TransferMenu",
            Base::kSelected,
            {{"a", Prompt(kFilters)}, {"d", Prompt(kTransfers)}},
            kTransfers,
            Asks::kKey,
            "s",
            Normal("Transfer Status: queued\n") + Prompt(kTransfers),
            kSessionLost,
            kInvalidSelection + Prompt(kTransfers),
            kRemoving,
            {"p", "Suspend", "()", "Remote Call failed ", kTransfers, ""},
            {kFirstTransfer, simulator::kTransferInterface, "Status",
             Notice(kTransfers, "Status Attribute Received: Unknown\n"),
             Notice(kTransfers, "Status Attribute Received: queued\n")}};
}

std::vector<Place> MakePlaces() {
    std::vector<Place> places = {MainMenuPlace(), DeviceChoice()};
    places.push_back(CredentialPlace("UserId", "u", "/User Id",
                                     {"me", "SetUserId", "()", "Set User Id failed ", "", ""}));
    places.push_back(
        CredentialPlace("Password", "p", "/Password",
                        {"secret", "SetPassword", "()", "Set Password failed ", "", ""}));
    for (const Place& place : {ProfileMenu(), Location(), PhoneBook(), Handle()})
        places.push_back(place);
    places.push_back(PullPlace("PullAll", {{"a", ""}}));
    places.push_back(PullPlace("Pull", {{"p", ValuePrompt("/vCard Handle")}, {"1", ""}}));
    places.back().leaves_loss_to_its_call = true;
    places.push_back(
        FilterMenuPlace("ListFilters", {{"l", ""}},
                        Heading("vCard Listing") + Lines({" 1.vcf\tAda"}) + Prompt(kProfile),
                        {"d", "List", "(a(ss))", kCallFailed, kProfile, "([('1.vcf', 'Ada')],)"}));
    places.push_back(FilterMenuPlace(
        "SizeFilters", {{"m", ""}}, Normal("Phone Book Size 7\n") + Prompt(kProfile),
        {"d", "GetSizePhonebook", "(q)", kCallFailed, kProfile, "(uint16 7,)"}));
    for (const FilterPromptRow& row : kFilterPrompts) places.push_back(FilterPromptPlace(row));
    for (const Place& place : {SearchField(), SearchValue(), TransferMenuPlace()})
        places.push_back(place);
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
    daemon().Reply("ListFilterFields", Value("(['N', 'TEL'],)"));
    if (!place.call.answer.empty()) daemon().Reply(place.call.method, Value(place.call.answer));
}

void PlaceTest::ReachBase(const Place& place, Here here) {
    if (place.base != Base::kMainMenu) OpenSession(0, here);
    if (place.base == Base::kSelected) SelectPhonebook(0, 0, here);
}

void PlaceTest::Open(const Place& place, Here here) {
    for (const Step& step : place.opening) {
        Type(step.line, here);
        Await(step.prompt, here);
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

}  // namespace morvane_test
