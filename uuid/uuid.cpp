#include "uuid/uuid.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

// The signatures are those of an existing interface.
// NOLINTBEGIN(performance-unnecessary-value-param, google-runtime-int)

namespace morvane {
namespace {

constexpr char kBaseUuid[] = "00000000-0000-1000-8000-00805f9b34fb";
static_assert(sizeof kBaseUuid == kUuidTextSize);

constexpr std::size_t kTextLength = kUuidTextSize - 1;
constexpr std::size_t kFirstGroupLength = 8;

// Offset of each byte's two digits in the text form.
constexpr std::size_t kBytePositions[] = {0,  2,  4,  6,  9,  11, 14, 16,
                                          19, 21, 24, 26, 28, 30, 32, 34};

bool IsHyphenPosition(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

char* WriteHex(char* out, unsigned int value, int digits) {
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
        *out++ = "0123456789abcdef"[(value >> static_cast<unsigned>(shift)) & 0xF];
    }
    *out = '\0';
    return out;
}

}  // namespace

bool IsUUIDValid(std::string text) {
    if (text.size() != kTextLength) {
        return false;
    }
    for (std::size_t i = 0; i < kTextLength; ++i) {
        const bool fits = IsHyphenPosition(i)
                              ? text[i] == '-'
                              : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
        if (!fits) {
            return false;
        }
    }
    return true;
}

bool ConvertUUID128To128Char(char* out, unsigned char out_size, std::vector<unsigned char> bytes) {
    if (out_size < kUuidTextSize) {
        return false;
    }
    std::memcpy(out, kBaseUuid, kUuidTextSize);
    for (std::size_t i = 0; i < std::size(kBytePositions); ++i) {
        char digits[3];
        WriteHex(digits, bytes[i], 2);
        std::memcpy(out + kBytePositions[i], digits, 2);
    }
    return true;
}

char* ConvertU16ToHex(char* out, unsigned short value) {
    return WriteHex(out, value, 4);
}

char* ConvertU32ToHex(char* out, unsigned int value) {
    return WriteHex(out, value, 8);
}

void ConvertUUID32to128Char(char* out, unsigned int uuid32) {
    char* const rest = ConvertU32ToHex(out, uuid32);
    std::memcpy(rest, kBaseUuid + kFirstGroupLength, kUuidTextSize - kFirstGroupLength);
}

unsigned int ConvertUUID16toUUID32(unsigned short uuid16) {
    return uuid16;
}

std::string UUIDToLocalCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

unsigned short Convert128CharToUUID16(std::string text) {
    if (text.size() != kTextLength ||
        text.compare(kFirstGroupLength, std::string::npos, kBaseUuid + kFirstGroupLength) != 0) {
        return 0;
    }
    return static_cast<unsigned short>(std::stoi(text.substr(4, 4), nullptr, 16));
}

bool Convert128CharToUUID128(unsigned char* out, unsigned char out_size, std::string text) {
    if (out_size < std::size(kBytePositions) || text.size() != kTextLength) {
        return false;
    }
    for (const std::size_t position : kBytePositions) {
        *out++ = static_cast<unsigned char>(std::stoi(text.substr(position, 2), nullptr, 16));
    }
    return true;
}

}  // namespace morvane

// NOLINTEND(performance-unnecessary-value-param, google-runtime-int)
