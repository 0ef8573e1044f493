#include "simulator/phone/vcard_line.h"

#include "interfaces/glib_ptr.h"

#include <glib.h>

#include <algorithm>
#include <optional>

namespace simulator {
namespace {

using morvane::TextPtr;

constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
constexpr char kWhiteSpace[] = " \t\r\n";

bool BeginsWithBlank(const std::string& line) {
    return !line.empty() && (line.front() == ' ' || line.front() == '\t');
}

/// Splits a text at separators that are not inside quotation marks.
std::vector<std::string> SplitQuoted(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    bool quoted = false;
    for (const char letter : text) {
        quoted = quoted != (letter == '"');
        if (letter == separator && !quoted) {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

bool IsTypeLetter(char letter) {
    return g_ascii_isalnum(letter) != FALSE || letter == '-';
}

/// Stores a word of a TYPE parameter, or a parameter without a name, which in vCard 2.1 may be
/// the value of any parameter.
void AddWord(ContentLine& line, const std::string& word) {
    if (word == "QUOTED-PRINTABLE") {
        line.encoding = Encoding::kQuotedPrintable;
    } else if (word == "BASE64") {
        line.encoding = Encoding::kBase64;
    } else if (word == "URI" || word == "URL") {
        line.is_uri = true;
    } else if (!word.empty() && std::all_of(word.begin(), word.end(), IsTypeLetter)) {
        line.types.push_back(word);
    }
}

void SetEncoding(ContentLine& line, const std::string& name) {
    if (name == "QUOTED-PRINTABLE") {
        line.encoding = Encoding::kQuotedPrintable;
    } else if (name == "BASE64" || name == "B") {
        line.encoding = Encoding::kBase64;
    } else if (name != "7BIT" && name != "8BIT") {
        throw MalformedVcard(line.number, "The encoding is unknown");
    }
}

void AddParameter(ContentLine& line, std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
    const std::size_t equals = text.find('=');
    const std::string name =
        equals == std::string::npos ? "TYPE" : Upper(Trimmed(text.substr(0, equals)));
    const std::string value = Trimmed(equals == std::string::npos ? text : text.substr(equals + 1));
    if (name == "ENCODING") {
        SetEncoding(line, Upper(value));
    } else if (name == "CHARSET") {
        line.charset = value;
    } else if (name == "VALUE") {
        line.is_uri = Upper(value) == "URI" || Upper(value) == "URL";
    } else if (name == "TYPE") {
        for (const std::string& word : SplitQuoted(Upper(value), ',')) {
            AddWord(line, Trimmed(word));
        }
    }
}

/// The name and its parameters: the part before the first colon outside quotation marks.
std::string HeadOf(const std::string& text) {
    return SplitQuoted(text, ':').front();
}

ContentLine ParseHead(const std::string& head, std::size_t number) {
    ContentLine line;
    line.number = number;
    const std::vector<std::string> parts = SplitQuoted(head, ';');
    const std::string name = Upper(Trimmed(parts.front()));
    line.name = name.substr(name.rfind('.') + 1);
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        AddParameter(line, *part);
    }
    return line;
}

/// Whether the value is quoted-printable; unknown until the head is complete.
std::optional<bool> IsQuotedPrintable(const std::string& text, std::size_t number) {
    const std::string head = HeadOf(text);
    if (head.size() == text.size()) {
        return std::nullopt;
    }
    return ParseHead(head, number).encoding == Encoding::kQuotedPrintable;
}

/// A folded line continues in one that begins with a blank. The blank is part of the text in vCard
/// 2.1 only.
std::string TakeUnfolded(LineReader& lines, VcardFormat version) {
    const std::size_t number = lines.Number();
    std::string text = lines.Take();
    std::optional<bool> is_quoted_printable;
    while (!lines.AtEnd()) {
        if (!is_quoted_printable) {
            is_quoted_printable = IsQuotedPrintable(text, number);
        }
        if (is_quoted_printable.value_or(false) && text.back() == '=') {
            text.pop_back();
            text += lines.Take();
        } else if (BeginsWithBlank(lines.Next())) {
            text += lines.Take().substr(version == VcardFormat::kVcard30 ? 1 : 0);
        } else {
            break;
        }
    }
    return text;
}

std::string DecodeQuotedPrintable(const ContentLine& line) {
    const std::string& text = line.value;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '=') {
            bytes += text[i];
            continue;
        }
        if (i + 1 == text.size()) {
            break;  // a soft line break at the end
        }
        const int high = g_ascii_xdigit_value(text[i + 1]);
        const int low = i + 2 < text.size() ? g_ascii_xdigit_value(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            throw MalformedVcard(line.number, "The value is not quoted-printable");
        }
        bytes += static_cast<char>(16 * high + low);
        i += 2;
    }
    return bytes;
}

bool IsBase64(const std::string& text) {
    const std::size_t end = text.find_last_not_of('=') + 1;
    return text.size() % 4 == 0 && text.size() - end <= 2 &&
           std::all_of(
               text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), [](char letter) {
                   return g_ascii_isalnum(letter) != FALSE || letter == '+' || letter == '/';
               });
}

std::string DecodeBase64(const ContentLine& line) {
    std::string text = line.value;
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](char letter) { return g_ascii_isspace(letter) != FALSE; }),
               text.end());
    if (!IsBase64(text)) {
        throw MalformedVcard(line.number, "The value is not base64");
    }
    if (text.empty()) {
        return {};  // GLib does not accept an empty text
    }
    gsize size = 0;
    g_base64_decode_inplace(text.data(), &size);
    return text.substr(0, size);
}

std::string ToUtf8(const ContentLine& line, const std::string& bytes) {
    std::string text = bytes;
    if (!line.charset.empty() && Upper(line.charset) != "UTF-8") {
        gsize size = 0;
        const TextPtr converted(g_convert(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8",
                                          line.charset.c_str(), nullptr, &size, nullptr));
        if (!converted) {
            throw MalformedVcard(line.number, "The text is not in its CHARSET, or that is unknown");
        }
        text.assign(converted.get(), size);
    }
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) {
        throw MalformedVcard(line.number, "The text is not in UTF-8");
    }
    return text;
}

/// The text of the escape sequence of a backslash and this letter; empty if there is none.
std::optional<char> Unescaped(char letter, VcardFormat version, bool compound) {
    if (version == VcardFormat::kVcard21) {
        return compound && letter == ';' ? std::optional<char>(letter) : std::nullopt;
    }
    if (letter == 'n' || letter == 'N') {
        return '\n';
    }
    const bool is_escape = letter == '\\' || letter == ';' || letter == ',' || letter == ':';
    return is_escape ? std::optional<char>(letter) : std::nullopt;
}

}  // namespace

LineReader::LineReader(const std::string& text) : text_(text) {
    if (text.rfind(kByteOrderMark, 0) == 0) {
        position_ = sizeof kByteOrderMark - 1;
    }
}

std::string LineReader::Next() const {
    std::string line = text_.substr(position_, text_.find('\n', position_) - position_);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

std::string LineReader::Take() {
    std::string line = Next();
    const std::size_t end = text_.find('\n', position_);
    position_ = end == std::string::npos ? text_.size() : end + 1;
    ++number_;
    return line;
}

ContentLine ReadContentLine(LineReader& lines, VcardFormat version) {
    const std::size_t number = lines.Number();
    const std::string text = TakeUnfolded(lines, version);
    const std::string head = HeadOf(text);
    if (head.size() == text.size()) {
        throw MalformedVcard(number, "There is no colon behind a name");
    }
    ContentLine line = ParseHead(head, number);
    line.value = text.substr(head.size() + 1);
    // Some phones break lines of base64 without folding. Base64 contains no colon, a property does.
    while (line.encoding == Encoding::kBase64 && !lines.AtEnd() && !Trimmed(lines.Next()).empty() &&
           lines.Next().find(':') == std::string::npos) {
        line.value += lines.Take();
    }
    return line;
}

std::string Decode(const ContentLine& line) {
    switch (line.encoding) {
        case Encoding::kNone:
            return line.value;
        case Encoding::kQuotedPrintable:
            return DecodeQuotedPrintable(line);
        case Encoding::kBase64:
            return DecodeBase64(line);
    }
    return line.value;
}

std::string DecodeText(const ContentLine& line) {
    const std::string text = ToUtf8(line, Decode(line));
    std::string normal;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            normal += text[i];
        } else if (i + 1 == text.size() || text[i + 1] != '\n') {
            normal += '\n';
        }
    }
    return normal;
}

std::vector<std::string> SplitText(const std::string& text, VcardFormat version, bool compound) {
    std::vector<std::string> components(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::optional<char> escaped = text[i] == '\\' && i + 1 < text.size()
                                                ? Unescaped(text[i + 1], version, compound)
                                                : std::nullopt;
        if (escaped) {
            components.back() += *escaped;
            ++i;
        } else if (compound && text[i] == ';') {
            components.emplace_back();
        } else {
            components.back() += text[i];
        }
    }
    return components;
}

std::string WithoutEscapes(const std::string& text) {
    std::string plain = text;
    plain.erase(std::remove_if(plain.begin(), plain.end(),
                               [](char letter) { return letter == '\\' || letter == '\n'; }),
                plain.end());
    return plain;
}

std::string Upper(const std::string& text) {
    return TextPtr(g_ascii_strup(text.data(), static_cast<gssize>(text.size()))).get();
}

std::string Trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    if (begin == std::string::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kWhiteSpace) + 1 - begin);
}

}  // namespace simulator
