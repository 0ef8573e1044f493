#include "app/obex_proxy.h"
#include "console/console_input.h"
#include "console/menu.h"
#include "console/reporting.h"
#include "interfaces/variant_dict.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"

namespace morvane {
namespace {

struct FilterMenu;

// State of one run of a filter menu: the dictionary, and fields chosen but not yet stored in it.
struct FilterRun {
    const FilterMenu& menu;
    PhonebookContext& context;
    MenuLock& lock;
    GVariantDict* dict;
    std::vector<std::string> fields;     // in the vCards to download or list
    std::vector<std::string> selectors;  // fields by which vCards are selected
};

using FilterAction = void (*)(FilterRun& run);
using FilterRow = MenuRow<FilterAction>;

template <void (PhonebookContext::*kSelect)(MenuLock&&, GVariantDict*)>
void Ask(FilterRun& run) {
    (run.context.*kSelect)(Lend(run.lock), run.dict);
}

void SetReset(FilterRun& run) {
    g_variant_dict_insert(run.dict, "ResetNewMissedCalls", "b", TRUE);
}

void AddAllFields(FilterRun& run) {
    run.fields.clear();
    InsertTexts(run.dict, "Fields", run.context.FilterFields());
}

void RemoveFields(FilterRun& run) {
    run.fields.clear();
    g_variant_dict_remove(run.dict, "Fields");
}

void AddField(FilterRun& run) {
    run.fields.push_back(run.context.SelectField(Lend(run.lock)));
    InsertTexts(run.dict, "Fields", run.fields);
}

void AddAllSelectors(FilterRun& run) {
    run.selectors = run.context.FilterFields();
}

void RemoveSelectors(FilterRun& run) {
    run.selectors.clear();
}

void AddSelector(FilterRun& run) {
    run.selectors.push_back(run.context.SelectField(Lend(run.lock)));
}

void SetFilter(FilterRun& run) {
    const std::string key = run.context.SelectFilter(Lend(run.lock));
    InsertTexts(run.dict, key.c_str(), run.selectors);
}

void UnsetFilters(FilterRun& run) {
    g_variant_dict_remove(run.dict, "FilterAll");
    g_variant_dict_remove(run.dict, "FilterAny");
}

void Help(FilterRun& run);

constexpr FilterRow kFormatRow = {'f', "Format", Ask<&PhonebookContext::SelectFormat>};
constexpr FilterRow kOrderRow = {'r', "Order", Ask<&PhonebookContext::SelectOrder>};
constexpr FilterRow kCountRow = {'c', "MaxCount", Ask<&PhonebookContext::SelectCount>};
constexpr FilterRow kOffsetRow = {'o', "Offset", Ask<&PhonebookContext::SelectOffset>};
constexpr FilterRow kResetRow = {'m', "Reset New Missed Calls", SetReset};
constexpr FilterRow kAddAllFieldsRow = {'a', "Add all Filter Fields", AddAllFields};
constexpr FilterRow kRemoveFieldsRow = {'r', "Remove all Filter Fields", RemoveFields};
constexpr FilterRow kAddFieldRow = {'s', "Select Single Filter Field", AddField};
constexpr FilterRow kAddAllSelectorsRow = {'i', "Add all vCard Selector Fields", AddAllSelectors};
constexpr FilterRow kRemoveSelectorsRow = {'j', "Remove all vCard Selector Fields",
                                           RemoveSelectors};
constexpr FilterRow kAddSelectorRow = {'k', "Set Single vCard Selector Field", AddSelector};
constexpr FilterRow kSetFilterRow = {'l', "Set vCard Selector Filter", SetFilter};
constexpr FilterRow kUnsetFiltersRow = {'u', "Unset vCard Selector Filters", UnsetFilters};
constexpr FilterRow kDoneRow = {'d', "Done", [](FilterRun& /*run*/) {}, AfterKey::kLeave};
constexpr FilterRow kDashesRow = {};
constexpr FilterRow kHelpRow = {'h', "Help", Help};

constexpr FilterRow kPullAllRows[] = {kFormatRow,      kCountRow,           kOffsetRow,
                                      kResetRow,       kAddAllFieldsRow,    kRemoveFieldsRow,
                                      kAddFieldRow,    kAddAllSelectorsRow, kRemoveSelectorsRow,
                                      kAddSelectorRow, kSetFilterRow,       kUnsetFiltersRow,
                                      kDoneRow,        kDashesRow,          kHelpRow};
constexpr FilterRow kPullRows[] = {kFormatRow, kAddAllFieldsRow, kRemoveFieldsRow, kAddFieldRow,
                                   kDoneRow,   kDashesRow,       kHelpRow};
constexpr FilterRow kListRows[] = {kOrderRow,       kCountRow,           kOffsetRow,
                                   kResetRow,       kAddAllSelectorsRow, kRemoveSelectorsRow,
                                   kAddSelectorRow, kSetFilterRow,       kUnsetFiltersRow,
                                   kDoneRow,        kDashesRow,          kHelpRow};
constexpr FilterRow kSizeRows[] = {kResetRow,       kAddAllSelectorsRow, kRemoveSelectorsRow,
                                   kAddSelectorRow, kSetFilterRow,       kUnsetFiltersRow,
                                   kDoneRow,        kDashesRow,          kHelpRow};

static_assert(HasDistinctKeys(kPullAllRows) && HasDistinctKeys(kPullRows) &&
              HasDistinctKeys(kListRows) && HasDistinctKeys(kSizeRows));

struct FilterMenu {
    const char* title;
    Table<FilterRow> rows;
    bool pauses_on_entry = true;
    bool leaves_quietly = false;  // without an error if the session is lost meanwhile
};

constexpr FilterMenu kPullAll = {"Select Optional PullAll Filters", kPullAllRows, false};
constexpr FilterMenu kPull = {"Select Optional Pull Filters", kPullRows, true, true};
constexpr FilterMenu kList = {"Select Optional List Filters", kListRows};
constexpr FilterMenu kSize = {"Select Optional Size Filters", kSizeRows};

void Display(const FilterMenu& menu) {
    PrintMenu(menu.title, menu.rows);
}

void Help(FilterRun& run) {
    Display(run.menu);
}

void Run(const FilterMenu& menu, PhonebookContext& context, MenuLock& lock, GVariantDict* dict) {
    const std::string prompt_path = obexProxy.PromptPath("/Filter Menu");
    FilterRun run = {menu, context, lock, dict, {}, {}};
    if (menu.pauses_on_entry) {
        MenuPause();
    }
    auto next = AfterKey::kGoOn;
    while (obexProxy.IsRunning() && next == AfterKey::kGoOn) {
        MenuPause();
        RequireSession();
        const char key = obexProxy.AskKey(lock, prompt_path);
        const bool input_ended = PROXY_InputEnded();
        if (menu.leaves_quietly && !obexProxy.IsValid()) {
            return;
        }
        RequireSession();
        ReportErrors<InvalidValueException>([&] { next = ActOnKey(menu.rows, key, run); });
        if (input_ended) {
            return;  // this menu has no key to quit: it would print errors endlessly
        }
    }
}

using Context = PhonebookContext;

template <void (Context::*kDisplay)() const, void (Context::*kRun)(MenuLock&&, GVariantDict*)>
void Open(Context& context, MenuLock& lock, GVariantDict* dict) {
    if (context.FilterFields().empty()) {
        context.ListFilterFields(false);
    }
    (context.*kDisplay)();
    (context.*kRun)(Lend(lock), dict);
}

}  // namespace

void PhonebookContext::SelectPullAllFilters(MenuLock&& lock, GVariantDict* dict) {
    Open<&Context::DisplayFilterMenu, &Context::RunFilterMenu>(*this, lock, dict);
}
void PhonebookContext::SelectPullFilters(MenuLock&& lock, GVariantDict* dict) {
    Open<&Context::DisplayPullFilterMenu, &Context::RunPullFilterMenu>(*this, lock, dict);
}
void PhonebookContext::SelectListFilters(MenuLock&& lock, GVariantDict* dict) {
    Open<&Context::DisplayListFilterMenu, &Context::RunListFilterMenu>(*this, lock, dict);
}
void PhonebookContext::SelectSizeFilters(MenuLock&& lock, GVariantDict* dict) {
    Open<&Context::DisplaySizeFilterMenu, &Context::RunSizeFilterMenu>(*this, lock, dict);
}

void PhonebookContext::DisplayFilterMenu() const {
    Display(kPullAll);
}
void PhonebookContext::DisplayPullFilterMenu() const {
    Display(kPull);
}
void PhonebookContext::DisplayListFilterMenu() const {
    Display(kList);
}
void PhonebookContext::DisplaySizeFilterMenu() const {
    Display(kSize);
}

void PhonebookContext::RunFilterMenu(MenuLock&& lock, GVariantDict* dict) {
    Run(kPullAll, *this, lock, dict);
}
void PhonebookContext::RunPullFilterMenu(MenuLock&& lock, GVariantDict* dict) {
    Run(kPull, *this, lock, dict);
}
void PhonebookContext::RunListFilterMenu(MenuLock&& lock, GVariantDict* dict) {
    Run(kList, *this, lock, dict);
}
void PhonebookContext::RunSizeFilterMenu(MenuLock&& lock, GVariantDict* dict) {
    Run(kSize, *this, lock, dict);
}

}  // namespace morvane
