#pragma once

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace vel::test {

/// The levels along an axis after tiles of one level each have faded in, in order.
/// @param tiles    start and level of each tile, all of `length` pixels
/// @param truncate truncates a blend that is given exactly, in units of 2^-32
template <class Truncate>
std::vector<int> fadedRows(const std::vector<std::pair<int, int>>& tiles, int length,
                           const Truncate& truncate) {
    std::vector<int> levels;
    for (const auto& [start, level] : tiles) {
        const int overlap = static_cast<int>(levels.size()) - start;
        const auto share = static_cast<double>(1.0F / static_cast<float>(overlap + 1));
        for (int i = 0; i < overlap; ++i) {
            const auto weight = static_cast<float>((i + 1) * share);
            const auto units = static_cast<std::int64_t>(std::ldexp(weight, 32));
            int& faded = levels[static_cast<std::size_t>(start + i)];
            faded = truncate(faded * ((std::int64_t{1} << 32) - units) + level * units);
        }
        levels.resize(static_cast<std::size_t>(start + length), level);
    }
    return levels;
}

} // namespace vel::test
