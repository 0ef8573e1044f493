#include "simulator/phone/phone.h"

#include "simulator/phone/people.h"

#include <algorithm>
#include <array>
#include <limits>

namespace simulator {
namespace {

constexpr std::array<const char*, 4> kHistories = {"cch", "ich", "och", "mch"};
constexpr unsigned kCallsInMemory = 40;
constexpr unsigned kCallsOnSim = 12;
constexpr unsigned kShortcuts = 5;
constexpr std::int64_t kLatestCall = 1704103200;  // 2024-01-01 10:00:00
constexpr unsigned kLongestPause = 20000;         // seconds from one call to the next

std::string HexDigits(std::uint64_t value, std::size_t digits) {
    std::string text;
    for (; value > 0; value >>= 4) {
        text.insert(0, 1, "0123456789ABCDEF"[value & 0xf]);
    }
    return std::string(digits - std::min(digits, text.size()), '0') + text;
}

/// The profile requires a unique id for every contact. Files contain them only if they were pulled.
Card WithUniqueId(Dice& dice, Card card) {
    if (!card.Has(Field::kBtUid)) {
        card.properties.push_back({Field::kBtUid, {}, {dice.HexDigits(32)}});
    }
    return card;
}

}  // namespace

Phone::Phone(std::string name, std::uint32_t seed, unsigned contacts,
             const std::vector<Card>& cards)
    : name_(std::move(name)) {
    Dice dice(seed);
    database_identifier_ = dice.HexDigits(32);
    FillContacts(dice, contacts, cards);
    FillShortcuts(dice);
    FillCalls(dice, "int", kCallsInMemory);
    FillSim(dice, "sim1", contacts / 4);
    FillSim(dice, "sim2", contacts / 8);
}

const Phonebook* Phone::Find(const std::string& location, const std::string& phonebook) const {
    const auto found = books_.find({location, phonebook});
    return found == books_.end() ? nullptr : &found->second;
}

std::string Phone::FolderOf(const std::string& location, const std::string& phonebook) {
    const std::string prefix =
        location == "int" ? "" : "SIM" + location.substr(location.size() - 1) + "/";
    return prefix + "telecom/" + phonebook;
}

std::string Phone::Counter(std::uint64_t value) {
    return HexDigits(value, 32);
}

Phonebook& Phone::Book(const std::string& location, const std::string& phonebook) {
    return books_[{location, phonebook}];
}

void Phone::FillContacts(Dice& dice, unsigned count, const std::vector<Card>& cards) {
    Phonebook& book = Book("int", "pb");
    book.push_back({0, MakeOwner(dice, name_)});
    for (const Card& card : cards) {
        book.push_back({static_cast<std::uint32_t>(book.size()), WithUniqueId(dice, card)});
    }
    for (std::uint32_t handle = 1; cards.empty() && handle <= count; ++handle) {
        book.push_back({handle, MakeContact(dice)});
    }
}

void Phone::FillShortcuts(Dice& dice) {
    const Phonebook& contacts = Book("int", "pb");
    Phonebook& speed_dials = Book("int", "spd");
    Phonebook& favourites = Book("int", "fav");
    const auto count =
        static_cast<std::uint32_t>(std::min<std::size_t>(kShortcuts, contacts.size() - 1));
    for (std::uint32_t key = 1; key <= count; ++key) {
        speed_dials.push_back({key, contacts[1 + dice.Throw(contacts.size() - 1)].card});
        speed_dials.back().card.properties.push_back(
            {Field::kSpeedDialKey, {}, {std::to_string(key)}});
        favourites.push_back({key, contacts[key].card});
    }
}

void Phone::FillSim(Dice& dice, const std::string& location, unsigned count) {
    Phonebook& book = Book(location, "pb");
    book.push_back({0, MakeOwner(dice, name_ + " " + location)});
    for (std::uint32_t handle = 1; handle <= count; ++handle) {
        book.push_back({handle, MakeSimContact(dice)});
    }
    FillCalls(dice, location, kCallsOnSim);
}

void Phone::FillCalls(Dice& dice, const std::string& location, unsigned count) {
    std::int64_t time = kLatestCall;
    for (unsigned i = 0; i < count; ++i) {
        calls_[location].push_back(MakeCall(dice, time));
        time -= 1 + dice.Throw(kLongestPause);
    }
    WriteHistories(location);
}

CallEntry Phone::MakeCall(Dice& dice, std::int64_t time) {
    constexpr std::array<CallKind, 3> kKinds = {CallKind::kIncoming, CallKind::kOutgoing,
                                                CallKind::kMissed};
    const CallKind kind = dice.Pick(kKinds);
    if (dice.OneIn(4)) {
        return {kind, time, MakePhoneNumber(dice), ""};
    }
    const Card& contact = dice.Pick(Book("int", "pb")).card;
    const std::string number = contact.Text(Field::kTel);
    return {kind, time, number.empty() ? MakePhoneNumber(dice) : number,
            number.empty() ? "" : contact.Text(Field::kFn)};
}

/// Call histories are numbered from 1 with the latest call.
void Phone::WriteHistories(const std::string& location) {
    for (const char* history : kHistories) {
        Book(location, history).clear();
    }
    for (const CallEntry& call : calls_[location]) {
        for (const char* history : {"cch", HistoryOf(call.kind)}) {
            Phonebook& book = Book(location, history);
            book.push_back({static_cast<std::uint32_t>(book.size() + 1), MakeCallCard(call)});
        }
    }
}

void Phone::AddContact(const std::string& name, const std::string& number) {
    Phonebook& book = Book("int", "pb");
    const std::uint32_t handle = book.back().handle + 1;
    Dice dice(handle);
    book.push_back({handle, MakeShortContact(name, number, dice.HexDigits(32))});
    ++primary_counter_;
    ++secondary_counter_;
}

void Phone::MissCall(const std::string& number) {
    Calls& calls = calls_["int"];
    const std::int64_t time = (calls.empty() ? kLatestCall : calls.front().time) + 60;
    std::string name;
    for (const Entry& entry : Book("int", "pb")) {
        if (entry.card.Text(Field::kTel) == number) {
            name = entry.card.Text(Field::kFn);
        }
    }
    calls.push_front({CallKind::kMissed, time, number, name});
    WriteHistories("int");
    if (new_missed_calls_ < std::numeric_limits<std::uint8_t>::max()) {
        ++new_missed_calls_;
    }
}

}  // namespace simulator
