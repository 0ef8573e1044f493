#pragma once

#include "simulator/phone/card.h"

#include <cstdint>
#include <random>
#include <string>

namespace simulator {

/// Random numbers that are the same on every platform, unlike the standard distributions.
class Dice {
  public:
    explicit Dice(std::uint32_t seed) : engine_(seed) {}

    /// 0 .. sides-1
    std::uint32_t Throw(std::size_t sides) { return static_cast<std::uint32_t>(engine_() % sides); }
    bool OneIn(unsigned chances) { return Throw(chances) == 0; }
    template <typename Table>
    const auto& Pick(const Table& table) {
        return table[Throw(std::size(table))];
    }
    std::string HexDigits(unsigned count);

  private:
    std::mt19937 engine_;
};

/// A contact in a phone's memory, with several numbers, addresses and often a photo.
Card MakeContact(Dice& dice);
/// The phone's owner: card 0 of every phone book.
Card MakeOwner(Dice& dice, const std::string& phone_name);
/// A contact on a SIM card: a name and one number.
Card MakeSimContact(Dice& dice);
/// Name and one number; `name` is split at its last blank.
Card MakeShortContact(const std::string& name, const std::string& number, const std::string& uid);

std::string MakePhoneNumber(Dice& dice);

}  // namespace simulator
