#include "play/files.h"

#include "play/descriptor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace play {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
constexpr std::size_t kLargestFile = std::size_t{64} << 20U;  // /dev/zero is endless

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

/// A temporary file in the directory of the file `beside`. The destructor removes it unless it has
/// been renamed to that file.
class Draft {
  public:
    explicit Draft(const char* beside) : path_(std::string(beside) + ".XXXXXX") {
        if (Descriptor(mkostemp(path_.data(), O_CLOEXEC)).Number() < 0) {
            Fail(beside);
        }
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() { unlink(path_.c_str()); }

    [[nodiscard]] const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

std::string ReadFile(const std::string& name) {
    const FilePtr file = Open(name, "re");
    std::string text;
    char chunk[65536];
    for (std::size_t count = 1; count > 0;) {
        count = std::fread(chunk, 1, sizeof chunk, file.get());
        text.append(chunk, count);
        if (text.size() > kLargestFile) {
            throw std::runtime_error(name + ": more than 64 MiB");
        }
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
    // Replace the target of a symbolic link, not the link.
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(name.c_str(), nullptr),
                                                           &std::free);
    struct stat old = {};
    if (!path || stat(path.get(), &old) != 0) {
        Fail(name);
    }
    const Draft draft(path.get());
    Write(Open(draft.Path(), "we").get(), name, lines);
    if (chmod(draft.Path().c_str(), old.st_mode & ALLPERMS) != 0 ||
        std::rename(draft.Path().c_str(), path.get()) != 0) {
        Fail(name);
    }
}

}  // namespace play
