#include "support/conversation.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

// Lines typed in a filter menu before "d", and the filters that are sent. The fields are N, TEL and
// EMAIL.
struct Choice {
    std::string words;
    std::string filters;
};

struct Theme {
    std::string name;
    std::vector<std::string> methods;  ///< operations with these filters
    std::vector<Choice> choices;
};

const std::string kNothing = "@a{sv} {}";
const std::vector<std::string> kPulls = {"PullAll", "Pull"};
const std::vector<std::string> kSelections = {"PullAll", "List", "GetSizePhonebook"};

const Theme kThemes[] = {
    {"Format",
     kPulls,
     {{"f 1 f 0", "{'Format': <'vcard21'>}"},
      {"f 1 f 2 f x", "{'Format': <'vcard30'>}"},
      {"f 2", kNothing}}},
    {"Order",
     {"List"},
     {{"r 2 r 0", "{'Order': <'indexed'>}"}, {"r 1 r 3 r x", "{'Order': <'alphanumeric'>}"}}},
    {"Numbers",
     {"PullAll", "List"},
     {{"c 1", "{'MaxCount': <uint16 1>}"},
      {"c 65535", "{'MaxCount': <uint16 65535>}"},
      {"o 65535", "{'Offset': <uint16 65535>}"},
      {"c 5 o 6 c 7 o 8", "{'MaxCount': <uint16 7>, 'Offset': <uint16 8>}"},
      {"c 5 c 0 c 65536 c x", "{'MaxCount': <uint16 5>}"},
      {"o 5 o 65536 o x o 0", "{'Offset': <uint16 0>}"}}},
    {"Reset", kSelections, {{"m m", "{'ResetNewMissedCalls': <true>}"}}},
    {"Fields",
     kPulls,
     {{"a", "{'Fields': <['N', 'TEL', 'EMAIL']>}"},
      {"s 0 s 0", "{'Fields': <['N', 'N']>}"},
      {"s 2 s 0", "{'Fields': <['EMAIL', 'N']>}"},
      {"s 0 s 3 s x s 1", "{'Fields': <['N', 'TEL']>}"}}},
    {"FieldsReplaced",
     kPulls,
     {{"s 0 a s 1", "{'Fields': <['TEL']>}"},
      {"s 0 a", "{'Fields': <['N', 'TEL', 'EMAIL']>}"},
      {"a s 3", "{'Fields': <['N', 'TEL', 'EMAIL']>}"}}},
    {"FieldsRemoved",
     kPulls,
     {{"r", kNothing},
      {"a r", kNothing},
      {"s 0 r", kNothing},
      {"s 0 r s 1", "{'Fields': <['TEL']>}"}}},
    {"Selectors",
     kSelections,
     {{"i", kNothing}, {"k 0", kNothing}, {"l 1", "{'FilterAny': <@as []>}"}}},
    {"SelectorsChosen",
     kSelections,
     {{"k 2 k 0 l 1", "{'FilterAny': <['EMAIL', 'N']>}"},
      {"k 0 k 0 l 0", "{'FilterAll': <['N', 'N']>}"},
      {"i k 1 l 0", "{'FilterAll': <['N', 'TEL', 'EMAIL', 'TEL']>}"},
      {"k 1 i l 0", "{'FilterAll': <['N', 'TEL', 'EMAIL']>}"},
      {"k 0 k 3 k x k 1 l 0", "{'FilterAll': <['N', 'TEL']>}"}}},
    {"SelectorsRemoved",
     kSelections,
     {{"j", kNothing},
      {"i j l 0", "{'FilterAll': <@as []>}"},
      {"k 0 j k 1 l 0", "{'FilterAll': <['TEL']>}"},
      {"i l 0 j", "{'FilterAll': <['N', 'TEL', 'EMAIL']>}"}}},
    {"FiltersSet",
     kSelections,
     {{"i l 0 l 1", "{'FilterAll': <['N', 'TEL', 'EMAIL']>, 'FilterAny': <['N', 'TEL', 'EMAIL']>}"},
      {"k 0 l 0 j k 1 l 1", "{'FilterAll': <['N']>, 'FilterAny': <['TEL']>}"},
      {"k 0 l 0 k 1 l 0", "{'FilterAll': <['N', 'TEL']>}"},
      {"k 0 l 0 k 1 l 2 l x", "{'FilterAll': <['N']>}"}}},
    {"FiltersUnset",
     kSelections,
     {{"u", kNothing},
      {"i l 0 l 1 u", kNothing},
      {"k 1 l 0 u l 1", "{'FilterAny': <['TEL']>}"},
      {"m l 0 u", "{'ResetNewMissedCalls': <true>}"}}},
    // Fields of cards and of selectors are independent.
    {"BothLists",
     {"PullAll"},
     {{"s 0 l 0", "{'Fields': <['N']>, 'FilterAll': <@as []>}"},
      {"k 0 s 1 l 0", "{'Fields': <['TEL']>, 'FilterAll': <['N']>}"},
      {"i r l 0", "{'FilterAll': <['N', 'TEL', 'EMAIL']>}"},
      {"s 0 j s 1 u", "{'Fields': <['N', 'TEL']>}"},
      {"a k 0 a l 1", "{'Fields': <['N', 'TEL', 'EMAIL']>, 'FilterAny': <['N']>}"}}},
    {"EveryKey",
     {"PullAll"},
     {{"f 1 c 10 o 20 m s 2 k 1 l 0 k 0 l 1 h",
       "{'Format': <'vcard30'>, 'MaxCount': <uint16 10>, 'Offset': <uint16 20>, "
       "'ResetNewMissedCalls': <true>, 'Fields': <['EMAIL']>, 'FilterAll': <['TEL']>, "
       "'FilterAny': <['TEL', 'N']>}"}}},
    {"EveryKey", {"Pull"}, {{"f 1 s 2 h", "{'Format': <'vcard30'>, 'Fields': <['EMAIL']>}"}}},
    {"EveryKey",
     {"List", "Search"},
     {{"r 2 c 10 o 20 m k 1 l 0 k 0 l 1 h",
       "{'Order': <'phonetic'>, 'MaxCount': <uint16 10>, 'Offset': <uint16 20>, "
       "'ResetNewMissedCalls': <true>, 'FilterAll': <['TEL']>, 'FilterAny': <['TEL', 'N']>}"},
      {"r 0 l 0 u", "{'Order': <'indexed'>}"}}},
    {"EveryKey",
     {"GetSizePhonebook", "GetSizeListing"},
     {{"m k 1 l 0 k 0 l 1 h",
       "{'ResetNewMissedCalls': <true>, 'FilterAll': <['TEL']>, 'FilterAny': <['TEL', 'N']>}"}}},
    // Filters are cleared when the menu opens again.
    {"FreshSelectors",
     kSelections,
     {{"i k 0", kNothing},
      {"l 0", "{'FilterAll': <@as []>}"},
      {"m", "{'ResetNewMissedCalls': <true>}"},
      {"", kNothing}}},
    {"FreshFields",
     kPulls,
     {{"s 0", "{'Fields': <['N']>}"},
      {"s 1", "{'Fields': <['TEL']>}"},
      {"f 0", "{'Format': <'vcard21'>}"},
      {"", kNothing}}},
};

using Entries = std::map<std::string, std::string>;

// The values are GVariant text with types.
Entries EntriesOf(GVariant* dictionary) {
    Entries entries;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary);
    const char* key = nullptr;
    GVariant* value = nullptr;
    while (g_variant_iter_loop(&iterator, "{&sv}", &key, &value) != FALSE)
        entries[key] = morvane::TextPtr(g_variant_print(value, TRUE)).get();
    return entries;
}

// The filters are the last argument of each call.
Entries SentFilters(const simulator::Call& call) {
    const Value body(call.body);
    const morvane::VariantPtr filters(
        g_variant_get_child_value(body, g_variant_n_children(body) - 1));
    EXPECT_STREQ(g_variant_get_type_string(filters.get()), "a{sv}");
    return EntriesOf(filters.get());
}

class FilterDictionaries : public ConversationTest {
  protected:
    void OpenPhonebook(const Operation& operation,
                       const std::string& fields = "(['N', 'TEL', 'EMAIL'],)",
                       Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().Reply("ListFilterFields", Value(fields));
        daemon().Refuse(operation.method, "com.veltrisonix.Error.Failed", "enough");
    }

    void TypeWords(const std::string& words, Here here = Here::Now()) {
        std::istringstream stream(words);
        for (std::string word; stream >> word;) Type(word, here);
    }

    // Starts and ends at the phone book menu.
    void ExpectFilters(const Operation& operation, const Choice& choice, Here here = Here::Now()) {
        SCOPED_TRACE("typed: " + choice.words);
        for (const std::string& line : operation.lines) Type(line, here);
        TypeWords(choice.words + " d", here);
        const auto call = daemon().AwaitCall(operation.method, Patience());
        ASSERT_TRUE(call) << "no call of " << operation.method;
        EXPECT_EQ(SentFilters(*call), EntriesOf(Value(choice.filters)));
        Await(kRefused + kPhonebookPrompt, here);
    }
};

struct ThemeOfOperation {
    Operation operation;
    Theme theme;

    [[nodiscard]] std::string Name() const { return operation.method + theme.name; }
};

void PrintTo(const ThemeOfOperation& row, std::ostream* stream) {
    *stream << row.Name();
}

std::vector<ThemeOfOperation> AllThemes() {
    std::vector<ThemeOfOperation> rows;
    for (const Theme& theme : kThemes)
        for (const std::string& method : theme.methods)
            rows.push_back({OperationOf(method), theme});
    return rows;
}

class FilterDictionary : public FilterDictionaries,
                         public testing::WithParamInterface<ThemeOfOperation> {};

TEST_P(FilterDictionary, ContainsChosenFilters) {
    const auto& [operation, theme] = GetParam();
    OpenPhonebook(operation);
    for (const Choice& choice : theme.choices) ExpectFilters(operation, choice);
}

INSTANTIATE_TEST_SUITE_P(, FilterDictionary, testing::ValuesIn(AllThemes()),
                         [](const auto& row) { return row.param.Name(); });

TEST_F(FilterDictionaries, AreEmptyListsWithoutFields) {
    OpenPhonebook(OperationOf("PullAll"), "(@as [],)");
    ExpectFilters(OperationOf("PullAll"), {"a", "{'Fields': <@as []>}"});
    ExpectFilters(OperationOf("PullAll"), {"i l 0", "{'FilterAll': <@as []>}"});
    ExpectFilters(OperationOf("PullAll"), {"s 0 k 0 l 1", "{'FilterAny': <@as []>}"});
}

TEST_F(FilterDictionaries, ContainLatestListedFields) {
    OpenPhonebook(OperationOf("Pull"));
    ExpectFilters(OperationOf("Pull"), {"a", "{'Fields': <['N', 'TEL', 'EMAIL']>}"});
    daemon().Reply("ListFilterFields", Value("(['URL', 'N', 'URL'],)"));
    EnterAndAwait("f", kPhonebookPrompt);
    ExpectFilters(OperationOf("Pull"), {"a", "{'Fields': <['URL', 'N', 'URL']>}"});
    ExpectFilters(OperationOf("Pull"), {"s 2 s 1", "{'Fields': <['URL', 'N']>}"});
}

}  // namespace
}  // namespace morvane_test
