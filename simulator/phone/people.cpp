#include "simulator/phone/people.h"

#include "simulator/phone/photo.h"

#include <array>

namespace simulator {
namespace {

struct Name {
    const char* text;
    const char* sound;
};

constexpr std::array<Name, 20> kGivenNames = {{
    {"Anna", "Anna"},    {"Jörg", "Yoerg"},     {"Zoë", "Zo-ee"},       {"Łukasz", "Wukash"},
    {"Søren", "Soeren"}, {"Émilie", "Emilee"},  {"José", "Hosay"},      {"Иван", "Ivan"},
    {"美咲", "Misaki"},  {"Ngọc", "Ngok"},      {"Siobhán", "Shivawn"}, {"Ahmet", "Ahmet"},
    {"Priya", "Preeya"}, {"Oluwaseun", "Oloo"}, {"Bob", "Bob"},         {"Mária", "Maria"},
    {"Νίκη", "Niki"},    {"Tobias", "Tobias"},  {"Chloé", "Klo-ay"},    {"Xavier", "Zavier"},
}};

constexpr std::array<Name, 20> kFamilyNames = {{
    {"Müller", "Mueller"},        {"O'Hara", "Ohara"},
    {"Nowak", "Novak"},           {"Ångström", "Ongstrom"},
    {"García", "Garthia"},        {"Петров", "Petrov"},
    {"山田", "Yamada"},           {"Nguyễn", "Nwin"},
    {"Smith", "Smith"},           {"Yılmaz", "Yulmaz"},
    {"Šimek", "Shimek"},          {"Dubois", "Dubwa"},
    {"Okafor", "Okafor"},         {"Sharma", "Sharma"},
    {"Jensen", "Yensen"},         {"Weiß", "Vice"},
    {"Παππάς", "Pappas"},         {"de la Cruz", "Delakrooz"},
    {"Zimmermann", "Tsimmerman"}, {"Aalto", "Aalto"},
}};

constexpr std::array<const char*, 6> kStreets = {"Lindenstraße", "High Street", "Rue de l'Église",
                                                 "Calle Mayor",  "Ulica Długa", "Storgatan"};

struct Town {
    const char* name;
    const char* code;
    const char* country;
};

constexpr std::array<Town, 6> kTowns = {{
    {"Köln", "50667", "Germany"},
    {"Leeds", "LS1 4AP", "United Kingdom"},
    {"Orléans", "45000", "France"},
    {"Málaga", "29001", "Spain"},
    {"Gdańsk", "80-831", "Poland"},
    {"Växjö", "352 30", "Sweden"},
}};

constexpr std::array<const char*, 5> kOrganisations = {"Example Works; Tools, and Dies",
                                                       "Café Zentral", "Harbour Office",
                                                       "Institut für Beispiele", "Night Bakery"};
constexpr std::array<const char*, 4> kTitles = {"Engineer", "Buyer", "Chef de cuisine",
                                                "Geschäftsführerin"};
constexpr std::array<const char*, 4> kNotes = {
    "Met at the fair; wants a quote, and a visit.", "Ring twice.\nDog bites.",
    "Prefers to be called in the morning between nine and eleven, never at lunch time, and not "
    "at all on Fridays.",
    "Grüße von Tante Käthe \\ Onkel Jürgen"};
/// Types of a contact's numbers. The first number of every contact has the first type.
constexpr std::array<const char*, 4> kNumberTypes = {"CELL", "HOME", "WORK", "FAX"};
/// Number ranges reserved for fiction.
constexpr std::array<const char*, 3> kNumberRanges = {"+4477009", "+1202555", "+3319900"};

Property Text(Field field, std::string text, std::vector<std::string> types = {}) {
    return {field, std::move(types), {std::move(text)}};
}

Property NameOf(const std::string& family, const std::string& given) {
    return {Field::kN, {}, {family, given, "", "", ""}};
}

std::string Number(std::uint32_t value, unsigned digits) {
    std::string text = std::to_string(value);
    while (text.size() < digits) {
        text.insert(0, 1, '0');
    }
    return text;
}

Property MakeAddress(Dice& dice, const char* type) {
    const Town& town = dice.Pick(kTowns);
    const std::string house = std::to_string(1 + dice.Throw(199));
    const std::string street = dice.Pick(kStreets);
    return {Field::kAdr,
            {type},
            {"", "", street + " " + house, town.name, "", town.code, town.country}};
}

std::string MakeDay(Dice& dice) {
    const std::string day = Number(1 + dice.Throw(28), 2);
    const std::string month = Number(1 + dice.Throw(12), 2);
    return Number(1950 + dice.Throw(55), 4) + "-" + month + "-" + day;
}

void AddNames(Card& card, const Name& family, const Name& given) {
    card.properties.push_back(NameOf(family.text, given.text));
    card.properties.push_back(Text(Field::kFn, std::string(given.text) + " " + family.text));
    card.properties.push_back(
        Text(Field::kSound, std::string(family.sound) + " " + given.sound, {"X-IRMC-N"}));
}

void AddNumbers(Card& card, Dice& dice) {
    const std::size_t count = 1 + dice.Throw(kNumberTypes.size());
    for (std::size_t i = 0; i < count; ++i) {
        card.properties.push_back(Text(Field::kTel, MakePhoneNumber(dice), {kNumberTypes[i]}));
    }
}

void AddMail(Card& card, Dice& dice, const Name& family, const Name& given) {
    for (unsigned i = dice.Throw(3); i > 0; --i) {
        card.properties.push_back(
            Text(Field::kEmail,
                 std::string(given.sound) + "." + family.sound + std::to_string(i) + "@example.org",
                 {"INTERNET"}));
    }
}

/// Only some contacts have each of these properties, so that selectors have an effect.
void AddExtras(Card& card, Dice& dice) {
    std::vector<Property>& all = card.properties;
    if (!dice.OneIn(3)) {
        all.push_back(MakeAddress(dice, "HOME"));
    }
    if (dice.OneIn(3)) {
        all.push_back(MakeAddress(dice, "WORK"));
    }
    if (dice.OneIn(2)) {
        all.push_back(Text(Field::kBday, MakeDay(dice)));
    }
    if (dice.OneIn(2)) {
        all.push_back({Field::kOrg, {}, {dice.Pick(kOrganisations), "Sales"}});
    }
    if (dice.OneIn(3)) {
        all.push_back(Text(Field::kTitle, dice.Pick(kTitles)));
    }
    if (dice.OneIn(3)) {
        all.push_back(Text(Field::kNote, dice.Pick(kNotes)));
    }
    if (dice.OneIn(4)) {
        all.push_back(Text(Field::kUrl, "https://example.org/?p=1;q=2,3"));
    }
    if (dice.OneIn(5)) {
        all.push_back({Field::kGeo, {}, {"50.938", "6.957"}});
    }
}

}  // namespace

std::string Dice::HexDigits(unsigned count) {
    std::string digits;
    while (digits.size() < count) {
        digits += "0123456789ABCDEF"[Throw(16)];
    }
    return digits;
}

std::string MakePhoneNumber(Dice& dice) {
    const std::string end = Number(dice.Throw(10000), 4);
    return dice.Pick(kNumberRanges) + end;
}

Card MakeContact(Dice& dice) {
    const Name& family = dice.Pick(kFamilyNames);
    const Name& given = dice.Pick(kGivenNames);
    Card card;
    AddNames(card, family, given);
    AddNumbers(card, dice);
    AddMail(card, dice, family, given);
    AddExtras(card, dice);
    if (dice.OneIn(2)) {
        card.properties.push_back({Field::kPhoto, {"GIF"}, {std::string(kPhoto)}, true});
    }
    card.properties.push_back(Text(Field::kBtUid, dice.HexDigits(32)));
    return card;
}

Card MakeOwner(Dice& dice, const std::string& phone_name) {
    Card card;
    card.properties.push_back(NameOf("Owner", phone_name));
    card.properties.push_back(Text(Field::kFn, phone_name + " Owner"));
    card.properties.push_back(Text(Field::kTel, MakePhoneNumber(dice), {"CELL"}));
    card.properties.push_back(Text(Field::kBtUid, dice.HexDigits(32)));
    return card;
}

Card MakeSimContact(Dice& dice) {
    const std::string family = dice.Pick(kFamilyNames).text;
    const std::string given = dice.Pick(kGivenNames).text;
    const std::string number = MakePhoneNumber(dice);
    return MakeShortContact(given + " " + family, number, dice.HexDigits(32));
}

Card MakeShortContact(const std::string& name, const std::string& number, const std::string& uid) {
    const std::size_t blank = name.rfind(' ');
    const bool split = blank != std::string::npos;
    Card card;
    card.properties.push_back(
        NameOf(split ? name.substr(blank + 1) : name, split ? name.substr(0, blank) : ""));
    card.properties.push_back(Text(Field::kFn, name));
    card.properties.push_back(Text(Field::kTel, number, {"CELL"}));
    card.properties.push_back(Text(Field::kBtUid, uid));
    return card;
}

}  // namespace simulator
