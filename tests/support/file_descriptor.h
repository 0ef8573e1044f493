#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace morvane_test {

/// Sole owner of a file descriptor.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number = -1) noexcept : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() { Close(); }

    int Number() const noexcept { return number_; }
    void Close() noexcept {
        if (number_ >= 0) close(std::exchange(number_, -1));
    }

  private:
    int number_;
};

/// The two ends of a pipe; both are closed in child processes.
struct Pipe {
    FileDescriptor reader;
    FileDescriptor writer;
};

/// Returns `result`. If it is negative, throws std::system_error with errno and `what`.
inline int Checked(int result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

/// `flags` as for pipe2(2). Throws std::system_error.
inline Pipe MakePipe(int flags = 0) {
    int ends[2] = {-1, -1};
    Checked(pipe2(ends, O_CLOEXEC | flags), "pipe2");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace morvane_test
