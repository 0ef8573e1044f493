#include "uuid/uuid.h"

#include "fuzz/fuzz.h"

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvane_fuzz {
namespace {

using namespace morvane;

std::string Hex(unsigned number, int digits) {
    std::array<char, 9> text = {};
    std::snprintf(text.data(), text.size(), "%0*x", digits, number);
    return text.data();
}

bool IsTextForm(const std::string& text) {
    std::string pattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    if (text.size() != pattern.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool digit = std::string("0123456789abcdefABCDEF").find(text[i]) != std::string::npos;
        if (pattern[i] == '-' ? text[i] != '-' : !digit) return false;
    }
    return true;
}

std::string TextOf(const std::vector<unsigned char>& bytes) {
    const auto text = std::make_unique<char[]>(kUuidTextSize);  // AddressSanitizer sees its end
    Require(ConvertUUID128To128Char(text.get(), kUuidTextSize, bytes), "16 bytes have a text");
    return text.get();
}

// A conversion of a text either tells what std::stoi tells or works.
template <typename Convert>
bool Converts(const Convert& convert) {
    try {
        convert();
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

void CheckNumber(unsigned number) {
    std::array<char, 9> text32 = {};
    std::array<char, 5> text16 = {};
    const auto low = static_cast<unsigned short>(number);
    Require(ConvertU32ToHex(text32.data(), number) == text32.data() + 8, "8 digits");
    Require(ConvertU16ToHex(text16.data(), low) == text16.data() + 4, "4 digits");
    RequireEqual(std::string(text32.data()), Hex(number, 8), "32 bits in hexadecimal");
    RequireEqual(std::string(text16.data()), Hex(low, 4), "16 bits in hexadecimal");

    std::array<char, kUuidTextSize> uuid = {};
    ConvertUUID32to128Char(uuid.data(), number);
    RequireEqual(std::string(uuid.data()), Hex(number, 8) + "-0000-1000-8000-00805f9b34fb",
                 "a 32-bit UUID's text form");
    RequireEqual(Convert128CharToUUID16(uuid.data()), low, "its low 16 bits");
    RequireEqual(ConvertUUID16toUUID32(low), number & 0xFFFF, "a 16-bit UUID widened");
}

void CheckBytes(std::string bytes) {
    bytes.resize(16);
    const std::vector<unsigned char> binary(bytes.begin(), bytes.end());
    const std::string text = TextOf(binary);
    Require(IsTextForm(text) && IsUUIDValid(text), "the text of 16 bytes is a UUID", text);
    std::vector<unsigned char> back(16);
    Require(Convert128CharToUUID128(back.data(), 16, text), "a UUID has 16 bytes", text);
    RequireEqual(back, binary, "bytes read back from their text");
}

void CheckText(const std::string& text) {
    const bool valid = IsTextForm(text);
    RequireEqual(IsUUIDValid(text), valid, "whether a text is a UUID");
    std::vector<unsigned char> bytes(16);
    bool fits = false;
    const bool converts = Converts([&] { fits = Convert128CharToUUID128(bytes.data(), 16, text); });
    Require(!converts || fits == (text.size() == 36), "36 characters are taken, no others", text);
    Converts([&] { static_cast<void>(Convert128CharToUUID16(text)); });
    if (valid) {
        Require(converts, "a UUID can be read", text);
        RequireEqual(TextOf(bytes), UUIDToLocalCase(text), "a text written again");
    }
}

}  // namespace

void Check(Input input) {
    const std::string text = input.Rest();
    CheckText(text);
    CheckText(UUIDToLocalCase(text));
    CheckBytes(text.substr(0, 16));
    unsigned number = 0;
    for (const char byte : text.substr(0, 4))
        number = number << 8 | static_cast<unsigned char>(byte);
    CheckNumber(number);
}

}  // namespace morvane_fuzz
