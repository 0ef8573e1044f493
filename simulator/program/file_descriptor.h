#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace simulator {

/// Sole owner of a file descriptor.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { Close(); }

    [[nodiscard]] int number() const { return number_; }
    void Close() {
        if (number_ >= 0) {
            close(std::exchange(number_, -1));
        }
    }

  private:
    int number_;
};

/// Returns `result`; throws `std::system_error` with errno if it is negative.
inline int Checked(int result, const std::string& what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

}  // namespace simulator
