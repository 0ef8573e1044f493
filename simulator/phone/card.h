#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// The properties of a vCard, numbered as the bits of the profile's property selector.
enum class Field : std::uint8_t {
    kVersion,
    kFn,
    kN,
    kPhoto,
    kBday,
    kAdr,
    kLabel,
    kTel,
    kEmail,
    kMailer,
    kTz,
    kGeo,
    kTitle,
    kRole,
    kLogo,
    kAgent,
    kOrg,
    kNote,
    kRev,
    kSound,
    kUrl,
    kUid,
    kKey,
    kNickname,
    kCategories,
    kProid,
    kClass,
    kSortString,
    kCallDatetime,
    kSpeedDialKey,
    kUci,
    kBtUid,
};

inline constexpr std::size_t kFieldCount = 32;
using FieldSet = std::bitset<kFieldCount>;

/// In the order of `Field`, as written in a vCard and in filters.
extern const std::array<const char*, kFieldCount> kFieldNames;

const char* FieldName(Field field);
std::optional<Field> FindField(const std::string& name);

struct Property {
    Field field;
    std::vector<std::string> types;       ///< such as HOME and CELL
    std::vector<std::string> components;  ///< UTF-8; the bytes themselves when `binary`
    bool binary = false;
};

/// A contact or call, independent of the vCard version.
struct Card {
    std::vector<Property> properties;

    [[nodiscard]] const Property* Find(Field field) const;
    /// Whether the card has such a property with a value. True for the version of every card.
    [[nodiscard]] bool Has(Field field) const;
    /// The first component of the first such property, or nothing.
    [[nodiscard]] std::string Text(Field field) const;
    /// The name in listings: the components of N, separated by ";", without empty ones at the end.
    [[nodiscard]] std::string ListingName() const;
};

}  // namespace simulator
