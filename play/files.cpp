#include "play/files.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace play {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void Fail(const std::string& name) {
    throw std::system_error(errno, std::generic_category(), name);
}

FilePtr Open(const std::string& name, const char* mode) {
    FilePtr file(std::fopen(name.c_str(), mode));
    if (!file) {
        Fail(name);
    }
    return file;
}

void Write(std::FILE* file, const std::string& name, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        std::fwrite(line.data(), 1, line.size(), file);
        std::fputc('\n', file);
    }
    if (std::fflush(file) != 0 || std::ferror(file) != 0) {
        Fail(name);
    }
}

}  // namespace

std::string ReadFile(const std::string& name) {
    const FilePtr file = Open(name, "re");
    std::string text;
    char chunk[65536];
    for (std::size_t count = 1; count > 0;) {
        count = std::fread(chunk, 1, sizeof chunk, file.get());
        text.append(chunk, count);
    }
    if (std::ferror(file.get()) != 0) {
        Fail(name);
    }
    return text;
}

void CreateFile(const std::string& name, const std::vector<std::string>& lines) {
    Write(Open(name, "wxe").get(), name, lines);
}

void ReplaceFile(const std::string& name, const std::vector<std::string>& lines) {
    const std::string draft = name + ".new";
    struct stat old = {};
    if (stat(name.c_str(), &old) != 0) {
        Fail(name);
    }
    CreateFile(draft, lines);
    if (chmod(draft.c_str(), old.st_mode) != 0 || std::rename(draft.c_str(), name.c_str()) != 0) {
        const int error = errno;
        unlink(draft.c_str());
        errno = error;
        Fail(name);
    }
}

}  // namespace play
