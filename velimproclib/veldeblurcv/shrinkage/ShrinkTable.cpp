#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>
#include <cmath>

namespace vel {

int shrinkAlphaIndex(double alpha) noexcept {
    return std::clamp(truncateToInt(10 * alpha), 0, kShrinkAlphas - 1);
}

int shrinkLevel(double beta, double rate) noexcept {
    return std::clamp(truncateToInt(std::log(beta) / std::log(rate)), 0, kShrinkLevels - 1);
}

StoredShrink storedShrink(int level, int alphaIndex) noexcept {
    const int row = 2 * kShrinkAlphas * level + 2 * alphaIndex;
    return {kStoredShrinkTable[row], kStoredShrinkTable[row + 1], shrinkKnots(alphaIndex)};
}

} // namespace vel
