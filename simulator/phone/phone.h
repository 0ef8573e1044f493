#pragma once

#include "simulator/phone/call_history.h"
#include "simulator/phone/card.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace simulator {

class Dice;

/// A card in its phone book.
struct Entry {
    std::uint32_t handle;
    Card card;
};

/// Ordered by handle.
using Phonebook = std::vector<Entry>;

/// The contents of a phone, independent of D-Bus.
class Phone {
  public:
    /// The contacts are `cards`, or `contacts` invented people if that is empty.
    Phone(std::string name, std::uint32_t seed, unsigned contacts,
          const std::vector<Card>& cards = {});

    [[nodiscard]] const std::string& name() const { return name_; }

    /// Null when the phone has no such phone book; `location` is int, sim1 or sim2.
    [[nodiscard]] const Phonebook* Find(const std::string& location,
                                        const std::string& phonebook) const;
    /// The path that the profile defines for that phone book.
    [[nodiscard]] static std::string FolderOf(const std::string& location,
                                              const std::string& phonebook);

    void AddContact(const std::string& name, const std::string& number);
    void MissCall(const std::string& number);

    // 32 hexadecimal digits each.
    [[nodiscard]] const std::string& DatabaseIdentifier() const { return database_identifier_; }
    [[nodiscard]] std::string PrimaryCounter() const { return Counter(primary_counter_); }
    [[nodiscard]] std::string SecondaryCounter() const { return Counter(secondary_counter_); }

    [[nodiscard]] std::uint8_t NewMissedCalls() const { return new_missed_calls_; }
    void ResetNewMissedCalls() { new_missed_calls_ = 0; }

  private:
    using Calls = std::deque<CallEntry>;  // latest first

    static std::string Counter(std::uint64_t value);
    Phonebook& Book(const std::string& location, const std::string& phonebook);
    void FillContacts(Dice& dice, unsigned count, const std::vector<Card>& cards);
    void FillShortcuts(Dice& dice);
    void FillSim(Dice& dice, const std::string& location, unsigned count);
    void FillCalls(Dice& dice, const std::string& location, unsigned count);
    CallEntry MakeCall(Dice& dice, std::int64_t time);
    void WriteHistories(const std::string& location);

    std::string name_;
    std::map<std::pair<std::string, std::string>, Phonebook> books_;
    std::map<std::string, Calls> calls_;  // by location
    std::string database_identifier_;
    std::uint64_t primary_counter_ = 1;
    std::uint64_t secondary_counter_ = 1;
    std::uint8_t new_missed_calls_ = 2;
};

}  // namespace simulator
