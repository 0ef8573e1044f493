#pragma once

#include <cstddef>

namespace morvane {

/// A view of rows with static storage duration.
template <typename Row>
class Table {
  public:
    template <std::size_t N>
    // NOLINTNEXTLINE(google-explicit-constructor): arrays of rows are passed as views
    constexpr Table(const Row (&rows)[N]) : first_(rows), size_(N) {}

    [[nodiscard]] constexpr const Row* begin() const { return first_; }
    [[nodiscard]] constexpr const Row* end() const { return first_ + size_; }

  private:
    const Row* first_;
    std::size_t size_;
};

}  // namespace morvane
