#include "simulator/phone/phone.h"
#include "simulator/phone/selection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace simulator {
namespace {

using std::string;

string Contents(const Phone& phone, const string& location, const string& phonebook) {
    string text;
    for (const Entry* entry : SelectEntries(*phone.Find(location, phonebook), Filters()))
        text += HandleName(*entry) + "\n" + WriteVcard(entry->card, VcardFormat::kVcard30);
    return text;
}

string TimeOf(const Entry& entry) {
    return entry.card.Text(Field::kCallDatetime);
}

class SimulatedPhone : public testing::Test {
  protected:
    Phone phone_{"Aster", 1, 25};
};

TEST_F(SimulatedPhone, ContentsDependOnTheSeed) {
    const Phone same("Aster", 1, 25);
    const Phone other("Aster", 2, 25);
    for (const char* phonebook : {"pb", "cch", "spd", "fav"}) {
        EXPECT_EQ(Contents(phone_, "int", phonebook), Contents(same, "int", phonebook));
        EXPECT_NE(Contents(phone_, "int", phonebook), Contents(other, "int", phonebook));
    }
    EXPECT_EQ(phone_.DatabaseIdentifier(), same.DatabaseIdentifier());
}

TEST_F(SimulatedPhone, HasThePhoneBooksOfEachLocation) {
    for (const char* location : {"int", "sim1", "sim2"}) {
        for (const char* phonebook : {"pb", "cch", "ich", "och", "mch"}) {
            ASSERT_NE(phone_.Find(location, phonebook), nullptr) << location << phonebook;
            EXPECT_FALSE(phone_.Find(location, phonebook)->empty()) << location << phonebook;
        }
        for (const char* phonebook : {"spd", "fav"}) {
            EXPECT_EQ(phone_.Find(location, phonebook) != nullptr, string(location) == "int");
        }
    }
    EXPECT_EQ(Phone::FolderOf("int", "pb"), "telecom/pb");
    EXPECT_EQ(Phone::FolderOf("sim1", "mch"), "SIM1/telecom/mch");
    EXPECT_EQ(Phone::FolderOf("sim2", "pb"), "SIM2/telecom/pb");
    EXPECT_EQ(phone_.Find("int", "xyz"), nullptr);
    EXPECT_EQ(phone_.Find("sim3", "pb"), nullptr);
}

TEST_F(SimulatedPhone, HasTheOwnersCardFirstAndUniqueIds) {
    const Phonebook& book = *phone_.Find("int", "pb");
    ASSERT_EQ(book.size(), 26U);
    std::set<string> ids;
    for (std::uint32_t handle = 0; handle <= 25; ++handle) {
        EXPECT_EQ(book[handle].handle, handle);
        EXPECT_EQ(ids.emplace(book[handle].card.Text(Field::kBtUid)).first->size(), 32U);
    }
    EXPECT_EQ(ids.size(), 26U);
    EXPECT_EQ(book[0].card.ListingName(), "Owner;Aster");
}

TEST_F(SimulatedPhone, OnlySomeContactsHaveEachProperty) {
    const Phonebook& book = *phone_.Find("int", "pb");
    for (const Field field : {Field::kPhoto, Field::kAdr, Field::kEmail, Field::kBday, Field::kOrg,
                              Field::kNote, Field::kTitle}) {
        const auto has = [field](const Entry& entry) { return entry.card.Has(field); };
        EXPECT_TRUE(std::any_of(book.begin(), book.end(), has)) << FieldName(field);
        EXPECT_FALSE(std::all_of(book.begin(), book.end(), has)) << FieldName(field);
    }
}

TEST_F(SimulatedPhone, HasSmallGifPhotos) {
    for (const Entry& entry : *phone_.Find("int", "pb")) {
        const Property* const photo = entry.card.Find(Field::kPhoto);
        if (photo == nullptr) continue;
        const string& bytes = photo->components.front();
        EXPECT_EQ(photo->types, std::vector<string>{"GIF"});
        EXPECT_EQ(bytes.substr(0, 6), "GIF87a");
        EXPECT_EQ(bytes.back(), ';');
        EXPECT_LE(bytes.size(), 200U);
    }
}

TEST_F(SimulatedPhone, SortsTheCombinedHistoryLatestFirst) {
    const Phonebook& calls = *phone_.Find("int", "cch");
    EXPECT_EQ(calls.front().handle, 1U);
    EXPECT_EQ(TimeOf(calls.front()), "20240101T100000");
    EXPECT_TRUE(std::is_sorted(calls.begin(), calls.end(), [](const Entry& a, const Entry& b) {
        return TimeOf(a) > TimeOf(b);
    }));
    std::size_t parts = 0;
    for (const char* phonebook : {"ich", "och", "mch"}) {
        parts += phone_.Find("int", phonebook)->size();
    }
    EXPECT_EQ(calls.size(), parts);
}

TEST_F(SimulatedPhone, RecordsMissedCallsOfContactsAndUnknownNumbers) {
    const Phonebook& calls = *phone_.Find("int", "mch");
    const std::size_t before = calls.size();
    const std::uint8_t missed = phone_.NewMissedCalls();
    phone_.MissCall("+12025550000");
    EXPECT_EQ(calls.size(), before + 1);
    EXPECT_EQ(calls.front().handle, 1U);
    EXPECT_EQ(calls.front().card.Text(Field::kTel), "+12025550000");
    EXPECT_EQ(calls.back().handle, before + 1);
    EXPECT_EQ(phone_.Find("int", "cch")->front().card.Text(Field::kTel), "+12025550000");
    EXPECT_EQ(phone_.NewMissedCalls(), missed + 1);
    const Card& contact = phone_.Find("int", "pb")->at(7).card;
    phone_.MissCall(contact.Text(Field::kTel));
    EXPECT_EQ(calls.front().card.Text(Field::kFn), contact.Text(Field::kFn));
}

TEST_F(SimulatedPhone, CountsChangesOfItsContacts) {
    EXPECT_EQ(phone_.PrimaryCounter(), string(31, '0') + "1");
    phone_.AddContact("Ann Mary Doe", "+12025550001");
    EXPECT_EQ(phone_.PrimaryCounter(), string(31, '0') + "2");
    EXPECT_EQ(phone_.SecondaryCounter(), string(31, '0') + "2");
    const Entry& added = phone_.Find("int", "pb")->back();
    EXPECT_EQ(added.handle, 26U);
    EXPECT_EQ(added.card.ListingName(), "Doe;Ann Mary");
}

TEST(PhoneOfCards, CallsHaveNumbersIfCardsHaveNone) {
    const Phone phone("Aster", 1, 25, {{{{Field::kN, {}, {"Doe"}}, {Field::kFn, {}, {"Doe"}}}}});
    EXPECT_EQ(phone.Find("int", "pb")->size(), 2U);
    for (const Entry& call : *phone.Find("int", "cch")) EXPECT_NE(call.card.Text(Field::kTel), "");
}

TEST(EmptyPhone, HasOnlyTheOwnersCard) {
    const Phone phone("Bare", 1, 0);
    EXPECT_EQ(phone.Find("int", "pb")->size(), 1U);
    EXPECT_TRUE(phone.Find("int", "spd")->empty());
    EXPECT_TRUE(phone.Find("int", "fav")->empty());
}

}  // namespace
}  // namespace simulator
