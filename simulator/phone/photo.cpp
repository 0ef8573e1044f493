#include "simulator/phone/photo.h"

namespace simulator {
namespace {

constexpr unsigned kColours = 128;
constexpr unsigned kCodeBits = 8;
constexpr std::uint8_t kClearCode = 128;
constexpr std::uint8_t kEndCode = 129;
/// The decoder's table would outgrow 8 bits after 126 codes; clearing it in time keeps every code
/// one byte wide, so that the picture needs no compressor.
constexpr unsigned kCodesBetweenClears = 120;
constexpr unsigned kLargestBlock = 255;

void AppendShort(std::string& bytes, unsigned value) {
    bytes += static_cast<char>(value & 0xff);
    bytes += static_cast<char>(value >> 8);
}

std::string Header(unsigned side) {
    std::string bytes = "GIF87a";
    AppendShort(bytes, side);
    AppendShort(bytes, side);
    const std::string global_table_of_128 = {'\xe6', '\0', '\0'};
    return bytes + global_table_of_128;
}

std::string ColourTable(std::uint32_t number) {
    std::string bytes;
    for (unsigned i = 0; i < kColours; ++i) {
        for (const unsigned shift : {0U, 8U, 16U}) {
            bytes += static_cast<char>((((number >> shift) & 0xff) + 2 * i) & 0xff);
        }
    }
    return bytes;
}

std::string ImageDescriptor(unsigned side) {
    std::string bytes = ",";
    AppendShort(bytes, 0);
    AppendShort(bytes, 0);
    AppendShort(bytes, side);
    AppendShort(bytes, side);
    return bytes + '\0' + static_cast<char>(kCodeBits - 1);
}

std::string Codes(std::uint32_t number, unsigned side) {
    std::string codes;
    for (unsigned pixel = 0; pixel < side * side; ++pixel) {
        if (pixel % kCodesBetweenClears == 0) {
            codes += static_cast<char>(kClearCode);
        }
        const unsigned x = pixel % side;
        const unsigned y = pixel / side;
        codes += static_cast<char>(((x * y) ^ (number + x + y)) % kColours);
    }
    return codes + static_cast<char>(kEndCode);
}

std::string InBlocks(const std::string& data) {
    std::string bytes;
    for (std::size_t start = 0; start < data.size(); start += kLargestBlock) {
        const std::string block = data.substr(start, kLargestBlock);
        bytes += static_cast<char>(block.size());
        bytes += block;
    }
    return bytes + '\0';
}

}  // namespace

std::string MakePhoto(std::uint32_t number, unsigned side) {
    return Header(side) + ColourTable(number) + ImageDescriptor(side) +
           InBlocks(Codes(number, side)) + ";";
}

}  // namespace simulator
