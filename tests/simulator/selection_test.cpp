#include "simulator/phone/selection.h"
#include "interfaces/glib_ptr.h"
#include "simulator/phone/refusal.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace simulator {
namespace {

using morvane::VariantPtr;
using std::string;
using Names = std::vector<string>;

Entry MakeEntry(std::uint32_t handle, const string& family, const string& number,
                const string& sound = "", const string& mail = "") {
    Entry entry{handle, {{{Field::kN, {}, {family, ""}}, {Field::kTel, {}, {number}}}}};
    if (!sound.empty()) entry.card.properties.push_back({Field::kSound, {}, {sound}});
    if (!mail.empty()) entry.card.properties.push_back({Field::kEmail, {}, {mail}});
    return entry;
}

const Phonebook& Book() {
    static const Phonebook book = {MakeEntry(0, "Zz Owner", "+1 555 0100"),
                                   MakeEntry(1, "müller", "+1 (555) 0111", "Mueller", "m@x"),
                                   MakeEntry(2, "Baker", "+1-555-0122", "Zeta"),
                                   MakeEntry(10, "abel", "+15550133", "", "a@x"),
                                   MakeEntry(26, "Cäsar", "+15550144", "Caesar")};
    return book;
}

Names NamesOf(const Selected& entries) {
    Names names;
    for (const Entry* entry : entries) names.push_back(entry->card.ListingName());
    return names;
}

Filters Parse(const string& dictionary, FilteredCall call = FilteredCall::kList) {
    const VariantPtr value(
        g_variant_ref_sink(g_variant_new_parsed(("@a{sv} " + dictionary).c_str())));
    return ParseFilters(value.get(), call);
}

/// The text of the refusal that `action` throws, or an empty text.
template <typename Action>
string RefusalOf(Action action) {
    try {
        action();
    } catch (const Refusal& refusal) {
        return refusal.name() + ": " + refusal.what();
    }
    return {};
}

string ParseRefusal(const string& dictionary, FilteredCall call = FilteredCall::kList) {
    return RefusalOf([&] { Parse(dictionary, call); });
}

const string kInvalid = "com.veltrisonix.Error.InvalidArguments: ";

const std::pair<const char*, Names> kListings[] = {
    {"{}", {"Zz Owner", "müller", "Baker", "abel", "Cäsar"}},
    {"{'Order': <'indexed'>}", {"Zz Owner", "müller", "Baker", "abel", "Cäsar"}},
    {"{'Order': <'alphanumeric'>}", {"Zz Owner", "abel", "Baker", "Cäsar", "müller"}},
    {"{'Order': <'phonetic'>}", {"Zz Owner", "abel", "Cäsar", "müller", "Baker"}},
    {"{'Order': <'alphanumeric'>, 'Offset': <uint16 1>, 'MaxCount': <uint16 2>}",
     {"abel", "Baker"}},
    {"{'Offset': <uint16 4>, 'MaxCount': <uint16 65535>}", {"Cäsar"}},
    {"{'Offset': <uint16 5>}", {}},
    {"{'Offset': <uint16 65535>}", {}},
    {"{'MaxCount': <uint16 0>}", {}},
    {"{'FilterAll': <['SOUND', 'EMAIL']>}", {"müller"}},
    {"{'FilterAny': <['SOUND', 'EMAIL']>}", {"müller", "Baker", "abel", "Cäsar"}},
    {"{'FilterAny': <['PHOTO']>}", {}},
    {"{'FilterAll': <['SOUND']>, 'FilterAny': <['EMAIL', 'PHOTO']>}", {"müller"}},
    {"{'FilterAll': <@as []>, 'FilterAny': <@as []>, 'MaxCount': <uint16 1>}", {"Zz Owner"}},
    {"{'FilterAll': <['EMAIL']>, 'Offset': <uint16 1>}", {"abel"}},
};

TEST(Listing, AppliesOrderSelectionAndRange) {
    for (const auto& [filters, names] : kListings)
        EXPECT_EQ(NamesOf(SelectEntries(Book(), Parse(filters))), names) << filters;
}

TEST(Listing, SortsACardWithoutSoundByItsNameInPhoneticOrder) {
    const Phonebook book = {MakeEntry(1, "Baker", "1", "Zeta"), MakeEntry(2, "miller", "2"),
                            MakeEntry(3, "Young", "3", "Able")};
    EXPECT_EQ(NamesOf(SelectEntries(book, Parse("{'Order': <'phonetic'>}"))),
              (Names{"Young", "miller", "Baker"}));
}

TEST(Search, FindsPartsOfNamesSoundsAndNumbersByTheirDigits) {
    const std::tuple<const char*, const char*, Names> rows[] = {
        {"name", "MÜL", {"müller"}},      {"name", "nobody", {}}, {"number", "5550111", {"müller"}},
        {"number", "555-012", {"Baker"}}, {"number", "x", {}},    {"sound", "zet", {"Baker"}},
    };
    const auto search = [](const char* field, const char* value) {
        return NamesOf(SearchEntries(Book(), Filters(), ParseSearchField(field), value));
    };
    for (const auto& [field, value, names] : rows) EXPECT_EQ(search(field, value), names) << value;
    for (const char* const field : {"name", "number", "sound"})
        EXPECT_EQ(search(field, "").size(), Book().size()) << field;
    EXPECT_EQ(RefusalOf([] { ParseSearchField("mail"); }), kInvalid + "Unknown search field: mail");
}

TEST(FindEntry, FindsHandlesInEitherCase) {
    for (const char* const name : {"1a.vcf", "1A.VCF", "0000001A.vcf"})
        EXPECT_EQ(HandleName(FindEntry(Book(), name)), "1A.vcf");
    EXPECT_EQ(HandleName(FindEntry(Book(), "0.vcf")), "0.vcf");
    EXPECT_EQ(FindEntry(Book(), "1A.vcf").handle, 26U);
}

TEST(FindEntry, RefusesInvalidAndUnknownHandles) {
    for (const char* name :
         {"", ".vcf", "1", "1.vcard", "0x1.vcf", "+1.vcf", " 1.vcf", "000000001.vcf", "g.vcf"}) {
        EXPECT_EQ(RefusalOf([name] { FindEntry(Book(), name); }),
                  kInvalid + "Malformed vCard handle: " + name);
    }
    EXPECT_EQ(RefusalOf([] { FindEntry(Book(), "FF.vcf"); }),
              "com.veltrisonix.Error.DoesNotExist: No such vCard: FF.vcf");
}

TEST(FindEntry, AcceptsUniqueIds) {
    const string uid = "0123456789ABCDEF0123456789ABCDEF";
    Phonebook book = Book();
    book[3].card.properties.push_back({Field::kBtUid, {}, {uid}});
    EXPECT_EQ(FindEntry(book, "X-BT-UID:" + uid).handle, 10U);
    EXPECT_EQ(FindEntry(book, "X-BT-UID:0123456789abcdef0123456789abcdef").handle, 10U);
    const string unknown = "X-BT-UID:" + string(32, '0');
    EXPECT_EQ(RefusalOf([&] { FindEntry(book, unknown); }),
              "com.veltrisonix.Error.DoesNotExist: No such vCard: " + unknown);
    EXPECT_NE(RefusalOf([&] { FindEntry(book, "X-BT-UID:"); }), "");
}

TEST(Filters, AreReadAndDefaultToAllEntries) {
    const Filters defaults = Parse("{}");
    EXPECT_EQ(defaults.format, VcardFormat::kVcard21);
    EXPECT_EQ(defaults.max_count, 65535);
    EXPECT_EQ(defaults.offset, 0);
    EXPECT_FALSE(defaults.reset_new_missed_calls);
    EXPECT_TRUE(defaults.fields.none());
    const Filters filters = Parse(
        "{'Format': <'vcard30'>, 'ResetNewMissedCalls': <true>, 'Fields': <['TEL', 'X-BT-UID']>}",
        FilteredCall::kPullAll);
    EXPECT_EQ(filters.format, VcardFormat::kVcard30);
    EXPECT_TRUE(filters.reset_new_missed_calls);
    EXPECT_TRUE(filters.fields.test(static_cast<std::size_t>(Field::kTel)));
    EXPECT_TRUE(filters.fields.test(static_cast<std::size_t>(Field::kBtUid)));
    EXPECT_EQ(filters.fields.count(), 2U);
}

TEST(Filters, RefuseUnknownKeysTypesAndValues) {
    const std::pair<const char*, const char*> rows[] = {
        {"{'Colour': <'red'>}", "Unknown filter: Colour"},
        {"{'MaxCount': <'5'>}", "Filter MaxCount is of type s, not q"},
        {"{'Order': <'random'>}", "Unknown order: random"},
        {"{'FilterAll': <['TEL', 'FAX']>}", "Unknown field: FAX"}};
    for (const auto& [filters, reason] : rows) EXPECT_EQ(ParseRefusal(filters), kInvalid + reason);
    EXPECT_EQ(ParseRefusal("{'Format': <'vcard40'>}", FilteredCall::kPull),
              kInvalid + "Unknown format: vcard40");
}

TEST(Filters, EachCallAcceptsOnlyItsOwn) {
    const std::pair<FilteredCall, const char*> calls[] = {
        {FilteredCall::kPullAll,
         "Format MaxCount Offset ResetNewMissedCalls Fields FilterAll FilterAny "},
        {FilteredCall::kPull, "Format Fields "},
        {FilteredCall::kList, "Order MaxCount Offset ResetNewMissedCalls FilterAll FilterAny "},
        {FilteredCall::kSize, "ResetNewMissedCalls FilterAll FilterAny "}};
    const std::pair<const char*, const char*> filters[] = {
        {"Format", "'vcard21'"},  {"Order", "'indexed'"},          {"MaxCount", "uint16 1"},
        {"Offset", "uint16 1"},   {"ResetNewMissedCalls", "true"}, {"Fields", "['TEL']"},
        {"FilterAll", "['TEL']"}, {"FilterAny", "['TEL']"}};
    for (const auto& [call, expected] : calls) {
        string allowed;
        for (const auto& [key, value] : filters) {
            const string refusal = ParseRefusal(string("{'") + key + "': <" + value + ">}", call);
            if (refusal.empty()) {
                allowed += key + string(" ");
            } else {
                EXPECT_EQ(refusal, kInvalid + "Filter not allowed here: " + key);
            }
        }
        EXPECT_EQ(allowed, expected);
    }
}

}  // namespace
}  // namespace simulator
