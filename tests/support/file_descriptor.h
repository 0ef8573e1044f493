#pragma once

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
    void Close() noexcept;

  private:
    int number_;
};

/// The two ends of a pipe; both are closed in child processes.
struct Pipe {
    FileDescriptor reader;
    FileDescriptor writer;
};

/// `flags` as for pipe2(2). Throws std::system_error.
Pipe MakePipe(int flags = 0);

/// Returns `result`; throws std::system_error named after `what` if it is negative.
int Checked(int result, const char* what);

}  // namespace morvane_test
