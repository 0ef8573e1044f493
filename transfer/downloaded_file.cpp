#include "transfer/downloaded_file.h"

#include "console/console_output.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>

namespace morvane {
namespace {

constexpr std::size_t kPieceSize = 512;

struct FileClose {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using FilePtr = std::unique_ptr<std::FILE, FileClose>;

// O_NONBLOCK, because opening a pipe would wait for its writer.
FilePtr Open(const char* name) {
    const int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    return FilePtr(descriptor < 0 ? nullptr : fdopen(descriptor, "r"));
}

bool IsRegular(std::FILE* file) {
    struct stat status = {};
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

// Also prints the last piece, which may be shorter or empty. Stops at a failed read.
void PrintPieces(std::FILE* file) {
    while (std::feof(file) == 0 && std::ferror(file) == 0) {
        char piece[kPieceSize + 1];
        const std::size_t length = std::fread(piece, 1, kPieceSize, file);
        if (length == 0 && std::ferror(file) != 0) {
            return;
        }
        piece[length] = '\0';
        PROXY_Print(kNormal, "%s", piece);
    }
}

}  // namespace

void DisplayFile(const char* name) {
    PROXY_Print(kNormal, "Displaying: %s\n", name);
    const FilePtr file = Open(name);
    if (!file) {
        PROXY_Print(kRed, "Could not open: %s\n", name);
        return;
    }
    if (IsRegular(file.get())) {
        PrintPieces(file.get());
    }
    PROXY_Print(kNormal, "\n");
}

}  // namespace morvane
