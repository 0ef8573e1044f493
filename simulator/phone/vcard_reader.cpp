#include "simulator/phone/vcard_reader.h"

#include "simulator/phone/vcard_line.h"

#include <optional>

namespace simulator {
namespace {

constexpr char kBegin[] = "BEGIN:VCARD";
constexpr char kEnd[] = "END:VCARD";
constexpr char kVersionName[] = "VERSION:";

bool IsMarker(const std::string& line, const char* marker) {
    return Upper(Trimmed(line)) == marker;
}

bool IsBlank(const std::string& line) {
    return Trimmed(line).empty();
}

/// Properties that can be binary, and are skipped if they are a URI.
bool IsMedia(Field field) {
    return field == Field::kPhoto || field == Field::kLogo || field == Field::kSound ||
           field == Field::kKey;
}

bool IsCompound(Field field) {
    return field == Field::kN || field == Field::kAdr || field == Field::kOrg ||
           field == Field::kGeo;
}

/// Reads ahead, on a copy of the reader, in a card that begins in line `begin`.
VcardFormat FindVersion(LineReader lines, std::size_t begin) {
    while (!lines.AtEnd() && !IsMarker(lines.Next(), kBegin) && !IsMarker(lines.Next(), kEnd)) {
        const std::size_t number = lines.Number();
        const std::string line = Trimmed(lines.Take());
        if (Upper(line).rfind(kVersionName, 0) != 0) {
            continue;
        }
        const std::string version = Trimmed(line.substr(sizeof kVersionName - 1));
        if (version != "2.1" && version != "3.0") {
            throw MalformedVcard(number, "The version is neither 2.1 nor 3.0");
        }
        return version == "2.1" ? VcardFormat::kVcard21 : VcardFormat::kVcard30;
    }
    throw MalformedVcard(begin, "The card has no VERSION");
}

void AddProperty(Card& card, const ContentLine& line, VcardFormat version) {
    const std::optional<Field> field = FindField(line.name);
    if (!field || field == Field::kVersion || field == Field::kAgent) {
        return;
    }
    if (IsMedia(*field) && line.encoding == Encoding::kBase64) {
        const std::string bytes = Decode(line);
        if (!bytes.empty()) {
            card.properties.push_back({*field, line.types, {bytes}, true});
        }
        return;
    }
    if (*field == Field::kPhoto || *field == Field::kLogo || (IsMedia(*field) && line.is_uri)) {
        return;
    }
    const std::string text = DecodeText(line);
    card.properties.push_back({*field, line.types,
                               *field == Field::kUrl
                                   ? std::vector<std::string>{WithoutEscapes(text)}
                                   : SplitText(text, version, IsCompound(*field))});
}

/// The value of FN: the given name, then the family name.
std::string FormattedName(const Property& name) {
    std::string text = name.components.size() > 1 ? name.components[1] : "";
    if (!text.empty() && !name.components.front().empty()) {
        text += ' ';
    }
    return text + name.components.front();
}

/// N and FN are mandatory in vCard 3.0, but many files lack one of them.
void CompleteNames(Card& card, std::size_t begin) {
    const Property* const name = card.Find(Field::kN);
    const Property* const formatted = card.Find(Field::kFn);
    if (name == nullptr && formatted == nullptr) {
        throw MalformedVcard(begin, "The card has neither N nor FN");
    }
    if (formatted == nullptr) {
        card.properties.push_back({Field::kFn, {}, {FormattedName(*name)}});
    } else if (name == nullptr) {
        card.properties.push_back({Field::kN, {}, {card.Text(Field::kFn), "", "", "", ""}});
    }
}

void SkipToEnd(LineReader& lines) {
    while (!lines.AtEnd() && !IsMarker(lines.Next(), kBegin)) {
        if (IsMarker(lines.Take(), kEnd)) {
            return;
        }
    }
}

/// A vCard 2.1 may contain another as the value of AGENT.
bool IsNested(const ContentLine& line, const LineReader& lines) {
    return line.name == FieldName(Field::kAgent) && IsBlank(line.value) && !lines.AtEnd() &&
           IsMarker(lines.Next(), kBegin);
}

Card ReadCard(LineReader& lines) {
    const std::size_t begin = lines.Number();
    lines.Take();
    const VcardFormat version = FindVersion(lines, begin);
    Card card;
    while (!lines.AtEnd() && !IsMarker(lines.Next(), kBegin)) {
        if (IsMarker(lines.Next(), kEnd)) {
            lines.Take();
            CompleteNames(card, begin);
            return card;
        }
        if (IsBlank(lines.Next())) {
            lines.Take();
            continue;
        }
        const ContentLine line = ReadContentLine(lines, version);
        if (IsNested(line, lines)) {
            lines.Take();
            SkipToEnd(lines);
        } else {
            AddProperty(card, line, version);
        }
    }
    throw MalformedVcard(begin, "The card has no END:VCARD");
}

void SkipToBegin(LineReader& lines) {
    while (!lines.AtEnd() && !IsMarker(lines.Next(), kBegin)) {
        lines.Take();
    }
}

}  // namespace

VcardFile ReadVcards(const std::string& text) {
    VcardFile file;
    LineReader lines(text);
    while (!lines.AtEnd()) {
        if (IsBlank(lines.Next())) {
            lines.Take();
            continue;
        }
        if (!IsMarker(lines.Next(), kBegin)) {
            file.complaints.push_back({lines.Number(), "This is outside of a card"});
            SkipToBegin(lines);
            continue;
        }
        try {
            file.cards.push_back(ReadCard(lines));
        } catch (const MalformedVcard& malformed) {
            file.complaints.push_back({malformed.line(), malformed.what()});
            SkipToEnd(lines);
        }
    }
    return file;
}

}  // namespace simulator
