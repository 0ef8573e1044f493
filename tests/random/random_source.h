#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>

namespace morvane_test {

/// Random numbers that depend only on the seed, on every machine: the standard specifies this
/// engine exactly, but not the distributions, which are therefore not used.
class RandomSource {
  public:
    explicit RandomSource(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `count` - 1.
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(engine_() % count); }
    bool Chance(unsigned percent) { return Below(100) < percent; }

    template <typename Table>
    const auto& Pick(const Table& table) {
        return *(std::begin(table) + static_cast<std::ptrdiff_t>(Below(std::size(table))));
    }

    /// Picks each row with a probability proportional to its `weight`. The sum must not be zero.
    template <typename Table, typename Weight>
    const auto& PickWeighted(const Table& table, Weight weight) {
        std::size_t total = 0;
        for (const auto& row : table) total += weight(row);
        std::size_t left = Below(total);
        auto row = std::begin(table);
        for (; left >= weight(*row); ++row) left -= weight(*row);
        return *row;
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace morvane_test
