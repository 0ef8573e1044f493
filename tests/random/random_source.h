#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>

namespace morvane_test {

/// Draws that are the same for the same seed, on every machine: the standard fixes this engine, but
/// not its distributions, which are therefore not used.
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

    /// As often as its `weight` says in comparison with the others'. One must have some.
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
