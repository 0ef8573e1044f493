#include "simulator/phone/card.h"

#include <algorithm>

namespace simulator {

const std::array<const char*, kFieldCount> kFieldNames = {
    "VERSION",
    "FN",
    "N",
    "PHOTO",
    "BDAY",
    "ADR",
    "LABEL",
    "TEL",
    "EMAIL",
    "MAILER",
    "TZ",
    "GEO",
    "TITLE",
    "ROLE",
    "LOGO",
    "AGENT",
    "ORG",
    "NOTE",
    "REV",
    "SOUND",
    "URL",
    "UID",
    "KEY",
    "NICKNAME",
    "CATEGORIES",
    "PROID",
    "CLASS",
    "SORT-STRING",
    "X-IRMC-CALL-DATETIME",
    "X-BT-SPEEDDIALKEY",
    "X-BT-UCI",
    "X-BT-UID",
};

const char* FieldName(Field field) {
    return kFieldNames.at(static_cast<std::size_t>(field));
}

std::optional<Field> FindField(const std::string& name) {
    const auto* const found = std::find(kFieldNames.begin(), kFieldNames.end(), name);
    if (found == kFieldNames.end()) {
        return std::nullopt;
    }
    return static_cast<Field>(found - kFieldNames.begin());
}

const Property* Card::Find(Field field) const {
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [field](const Property& one) { return one.field == field; });
    return found == properties.end() ? nullptr : &*found;
}

bool Card::Has(Field field) const {
    if (field == Field::kVersion) {
        return true;
    }
    return std::any_of(properties.begin(), properties.end(), [field](const Property& one) {
        return one.field == field &&
               std::any_of(one.components.begin(), one.components.end(),
                           [](const std::string& text) { return !text.empty(); });
    });
}

std::string Card::Text(Field field) const {
    const Property* property = Find(field);
    if (property == nullptr || property->components.empty()) {
        return {};
    }
    return property->components.front();
}

std::string Card::ListingName() const {
    const Property* name = Find(Field::kN);
    if (name == nullptr) {
        return {};
    }
    std::string joined;
    for (const std::string& component : name->components) {
        joined += component + ";";
    }
    return joined.substr(0, joined.find_last_not_of(';') + 1);
}

}  // namespace simulator
