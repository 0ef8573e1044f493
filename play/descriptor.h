#pragma once

#include <utility>

#include <unistd.h>

namespace play {

/// Sole owner of a file descriptor, which it closes.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    [[nodiscard]] int Number() const { return number_; }
    void Close() {
        if (const int number = std::exchange(number_, -1); number >= 0) {
            close(number);
        }
    }

  private:
    int number_ = -1;
};

/// Returns `result`. If it is negative, throws std::system_error with errno and `what`.
int Checked(int result, const char* what);

}  // namespace play
