#include "simulator/program/phone_book.h"

#include "simulator/phone/vcard_reader.h"

#include <glib.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace simulator {
namespace {

constexpr std::size_t kMostCards = 9999;                      // the limit of --contacts
constexpr std::size_t kLargestFile = std::size_t{64} << 20U;  // /dev/zero is endless

struct FileRelease {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

std::string ReadWholeFile(const std::string& path) {
    const std::unique_ptr<std::FILE, FileRelease> file(std::fopen(path.c_str(), "re"));
    std::string text;
    char buffer[65536];
    std::size_t size = 0;
    while (file && (size = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
        text.append(buffer, size);
        if (text.size() > kLargestFile) {
            throw std::runtime_error("--phone-book: more than 64 MiB in " + path);
        }
    }
    if (!file || std::ferror(file.get()) != 0) {
        throw std::runtime_error("--phone-book: cannot read " + path + ": " + g_strerror(errno));
    }
    return text;
}

/// Detects UTF-16 by its byte order mark or by the zero byte of an ASCII character.
bool IsUtf16(const std::string& text) {
    const std::string beginning = text.substr(0, 2);
    return beginning == "\xff\xfe" || beginning == "\xfe\xff" ||
           beginning.find('\0') != std::string::npos;
}

}  // namespace

std::vector<Card> LoadPhoneBook(const std::string& path) {
    const std::string text = ReadWholeFile(path);
    if (IsUtf16(text)) {
        throw std::runtime_error("--phone-book: " + path +
                                 " is in UTF-16: convert it, as with iconv -f UTF-16 -t UTF-8");
    }
    const VcardFile file = ReadVcards(text);
    for (const VcardComplaint& complaint : file.complaints) {
        std::fprintf(stderr, "%s:%zu: %s\n", path.c_str(), complaint.line,
                     complaint.reason.c_str());
    }
    if (file.cards.empty()) {
        throw std::runtime_error("--phone-book: no usable card in " + path);
    }
    if (file.cards.size() > kMostCards) {
        throw std::runtime_error("--phone-book: more than " + std::to_string(kMostCards) +
                                 " cards in " + path);
    }
    return file.cards;
}

}  // namespace simulator
