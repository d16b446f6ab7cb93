#include "velimproclib/tiles/planBlocks.h"

#include "velimproclib/tiles/AxisPlan.h"

namespace vel {

namespace {

/// A length that is a multiple already is raised to the next one, too: 512 gives 528.
std::int64_t nextMultipleOf16(std::int64_t length) {
    return (length / 16 + 1) * 16;
}

} // namespace

TileGeometry planBlocks(std::uint8_t mode, std::int32_t total, std::int32_t tileLength,
                        std::int32_t overlap) noexcept {
    const float fraction = static_cast<float>(overlap) / static_cast<float>(tileLength);
    const double keep = 1.0 - static_cast<double>(fraction);
    if (mode != 0) {
        return planAlignedTiles(total, tileLength, keep, nextMultipleOf16);
    }
    if (total <= tileLength) {
        return {1, tileLength, tileLength};
    }
    return planEqualTiles(total, tileLength, keep);
}

} // namespace vel
