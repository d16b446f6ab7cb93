#include "velimproclib/tiles/AxisPlan.h"

#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>
#include <limits>

namespace vel {

namespace {

/// Tiles that cover `rest` pixels beyond the first tile's, in strides of `stride`.
std::int64_t tilesForRest(std::int64_t rest, double stride) {
    const std::int32_t strides = truncateToInt(static_cast<double>(rest) / stride + 0.85);
    // A stride of nothing asks for no finite number of tiles.
    const bool counted = strides < std::numeric_limits<std::int32_t>::max();
    return counted ? std::max<std::int64_t>(std::int64_t{strides} + 1, 2) : 2;
}

} // namespace

TileGeometry planEqualTiles(std::int64_t total, std::int64_t tileLength, double keep) noexcept {
    const double stride = static_cast<double>(tileLength) * keep;
    const std::int64_t rest = total - tileLength;
    const std::int64_t count = tilesForRest(rest, stride);
    std::int64_t step = rest / (count - 1) + 1;
    const std::int64_t uncovered = total - (count - 1) * step - tileLength;
    if (uncovered > 0) {
        step += uncovered / count + 1;
    }
    if (step >= tileLength) {
        step = truncateToInt(stride);
    }
    return {narrowToInt32(count), narrowToInt32(tileLength), narrowToInt32(step)};
}

TileGeometry planAlignedTiles(std::int64_t total, std::int64_t tileLength, double keep,
                              Round16 round16) noexcept {
    const auto length = static_cast<double>(tileLength);
    if (total < truncateToInt(1.5 * length)) {
        const std::int32_t whole = narrowToInt32(round16(total));
        return {1, whole, whole};
    }
    if (total < truncateToInt(1.5 * (2.0 * length) * keep)) {
        const std::int32_t half = truncateToInt(0.5 * static_cast<double>(total) / keep);
        return {2, narrowToInt32(round16(half)), narrowToInt32(round16(total / 2))};
    }
    return planEqualTiles(total, round16(tileLength), keep);
}

} // namespace vel
