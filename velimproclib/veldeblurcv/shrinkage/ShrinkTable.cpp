#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vel {

int shrinkAlphaIndex(double alpha) noexcept {
    return std::clamp(truncateToInt(10 * alpha), 0, kShrinkAlphas - 1);
}

int shrinkKnots(int alphaIndex) noexcept {
    constexpr std::array<int, kShrinkAlphas> kKnots = {6, 6, 8, 8, 10, 12, 14, 16, 18, 22, 6};
    return kKnots[static_cast<std::size_t>(alphaIndex)];
}

int shrinkLevel(double beta, double rate) noexcept {
    return std::clamp(truncateToInt(std::log(beta) / std::log(rate)), 0, kShrinkLevels - 1);
}

StoredShrink storedShrink(int level, int alphaIndex) noexcept {
    const int row = 2 * kShrinkAlphas * level + 2 * alphaIndex;
    return {kStoredShrinkTable[row], kStoredShrinkTable[row + 1], shrinkKnots(alphaIndex)};
}

} // namespace vel
