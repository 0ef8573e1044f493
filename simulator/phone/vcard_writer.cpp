#include "simulator/phone/vcard_writer.h"

#include "interfaces/glib_ptr.h"

#include <glib.h>

#include <algorithm>

namespace simulator {
namespace {

constexpr std::size_t kFoldedLength = 75;
constexpr std::size_t kQuotedLength = 76;
constexpr char kLineEnd[] = "\r\n";

/// Differences between the versions, except for encoding a line.
struct FormatRules {
    const char* version;
    const char* type_prefix;
    FieldSet mandatory;
    std::string (*write_value)(const std::string& head, const Property& property);
};

FieldSet Set(std::initializer_list<Field> fields) {
    FieldSet set;
    for (const Field field : fields) {
        set.set(static_cast<std::size_t>(field));
    }
    return set;
}

std::string Base64(const std::string& bytes) {
    const std::vector<guchar> data(bytes.begin(), bytes.end());
    const morvane::TextPtr text(g_base64_encode(data.data(), data.size()));
    return text.get();
}

template <typename Escape>
std::string Join(const std::vector<std::string>& components, Escape escape) {
    std::string joined;
    for (const std::string& component : components) {
        if (&component != &components.front()) {
            joined += ';';
        }
        for (const char letter : component) {
            joined += escape(letter);
        }
    }
    return joined;
}

bool IsPlain(char letter) {
    return letter >= 0x20 && letter <= 0x7e;
}

bool IsPlain(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char letter) { return IsPlain(letter); });
}

bool IsAscii(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char letter) {
        return (static_cast<unsigned char>(letter) & 0x80) != 0;
    });
}

/// Version 2.1 ends binary data with an empty line.
std::string WriteBinary21(const std::string& head, const Property& property) {
    std::string lines = head + ";ENCODING=BASE64:" + kLineEnd;
    const std::string text = Base64(property.components.front());
    for (std::size_t start = 0; start < text.size(); start += kFoldedLength - 1) {
        lines += " " + text.substr(start, kFoldedLength - 1) + kLineEnd;
    }
    return lines + kLineEnd;
}

/// Version 2.1 folds text only at blanks; encode a long line as quoted-printable, like one that is
/// not plain ASCII.
std::string WriteText21(const std::string& head, const Property& property) {
    const std::string text = EscapeVcard21(property.components);
    if (IsPlain(text) && head.size() + 1 + text.size() <= kQuotedLength) {
        return head + ":" + text + kLineEnd;
    }
    std::string start = head + ";ENCODING=QUOTED-PRINTABLE";
    if (!IsAscii(text)) {
        start += ";CHARSET=UTF-8";
    }
    start += ":";
    return start + QuotedPrintable(text, start.size()) + kLineEnd;
}

std::string Write21(const std::string& head, const Property& property) {
    return property.binary ? WriteBinary21(head, property) : WriteText21(head, property);
}

std::string Write30(const std::string& head, const Property& property) {
    if (property.binary) {
        return FoldLine(head + ";ENCODING=b:" + Base64(property.components.front())) + kLineEnd;
    }
    // A URL is not text: it is not escaped.
    const bool literal = property.field == Field::kUrl;
    const std::string value =
        literal ? property.components.front() : EscapeVcard30(property.components);
    return FoldLine(head + ":" + value) + kLineEnd;
}

const FormatRules& RulesOf(VcardFormat format) {
    static const FormatRules kVcard21{"2.1", ";", Set({Field::kVersion, Field::kN, Field::kTel}),
                                      Write21};
    static const FormatRules kVcard30{
        "3.0", ";TYPE=", Set({Field::kVersion, Field::kN, Field::kFn, Field::kTel}), Write30};
    return format == VcardFormat::kVcard21 ? kVcard21 : kVcard30;
}

std::string Head(const Property& property, const FormatRules& rules) {
    std::string head = FieldName(property.field);
    for (const std::string& type : property.types) {
        head += rules.type_prefix + type;
    }
    return head;
}

}  // namespace

std::string FoldLine(const std::string& line) {
    std::string folded;
    std::size_t start = 0;
    std::size_t room = kFoldedLength;
    while (line.size() - start > room) {
        std::size_t end = start + room;
        while ((static_cast<unsigned char>(line[end]) & 0xc0) == 0x80) {
            --end;
        }
        folded += line.substr(start, end - start) + kLineEnd + " ";
        start = end;
        room = kFoldedLength - 1;
    }
    return folded + line.substr(start);
}

std::string QuotedPrintable(const std::string& text, std::size_t used) {
    std::string quoted;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool last = i + 1 == text.size();
        const bool plain = IsPlain(text[i]) && text[i] != '=' && (!last || text[i] != ' ');
        char hex[4];
        g_snprintf(hex, sizeof hex, "=%02X",
                   static_cast<unsigned>(static_cast<unsigned char>(text[i])));
        const std::string piece = plain ? std::string(1, text[i]) : hex;
        if (used + piece.size() + (last ? 0 : 1) > kQuotedLength) {
            quoted += std::string("=") + kLineEnd;
            used = 0;
        }
        quoted += piece;
        used += piece.size();
    }
    return quoted;
}

std::string EscapeVcard30(const std::vector<std::string>& components) {
    return Join(components, [](char letter) -> std::string {
        if (letter == '\n') {
            return "\\n";
        }
        if (letter == '\\' || letter == ';' || letter == ',') {
            return {'\\', letter};
        }
        return {letter};
    });
}

std::string EscapeVcard21(const std::vector<std::string>& components) {
    const bool compound = components.size() > 1;
    return Join(components, [compound](char letter) -> std::string {
        if (letter == '\n') {
            return "\r\n";
        }
        if (letter == ';' && compound) {
            return "\\;";
        }
        return {letter};
    });
}

std::string WriteVcard(const Card& card, VcardFormat format, const FieldSet& fields) {
    const FormatRules& rules = RulesOf(format);
    const FieldSet wanted = fields.none() ? ~fields : fields | rules.mandatory;
    std::string text = std::string("BEGIN:VCARD\r\nVERSION:") + rules.version + kLineEnd;
    for (const Property& property : card.properties) {
        if (!wanted.test(static_cast<std::size_t>(property.field))) {
            continue;
        }
        text += rules.write_value(Head(property, rules), property);
    }
    return text + "END:VCARD" + kLineEnd;
}

}  // namespace simulator
