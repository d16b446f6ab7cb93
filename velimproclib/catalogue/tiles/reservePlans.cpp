#include "velimproclib/catalogue/tiles/reservePlans.h"

#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/tiles/planBlocks.h"

#include <algorithm>

namespace vel {

namespace {

std::int64_t upToMultipleOf16(std::int64_t length) {
    return (length + 15) / 16 * 16;
}

std::int32_t upToEven(std::int64_t length) {
    return narrowToInt32(length + (length & 1));
}

} // namespace

TileGeometry reserveTilePlan(std::int32_t total, std::int32_t tileLength, float fraction) noexcept {
    const double keep = 1.0 - static_cast<double>(fraction);
    return planAlignedTiles(total, tileLength, keep, upToMultipleOf16);
}

TileGeometry reserveEvenTilePlan(std::int32_t total, std::int32_t tileLength,
                                 std::int32_t overlap) noexcept {
    const auto wanted = static_cast<double>(tileLength);
    if (total < truncateToInt(1.25 * wanted)) {
        return {1, total, total};
    }
    if (total < truncateToInt(1.25 * (2.0 * wanted))) {
        const std::int64_t half = total / 2;
        return {2, upToEven(half + overlap), upToEven(half)};
    }
    const double stride = wanted - static_cast<double>(overlap);
    const std::int64_t count = std::max(truncateToInt(total / stride + 0.5), 1);
    const std::int64_t share = total / count;
    const std::int64_t extra = std::max<std::int64_t>((total - share * count + overlap) / count, 0);
    const std::int64_t step = share + extra;
    return {narrowToInt32(count), upToEven(step + overlap), narrowToInt32(step)};
}

} // namespace vel
