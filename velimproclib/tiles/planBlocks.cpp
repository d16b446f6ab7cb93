#include "velimproclib/tiles/planBlocks.h"

#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>
#include <limits>

// Intermediate values have 64 bits, therefore no 32-bit input overflows; only results are narrowed.
namespace vel {

namespace {

/// Tiles that cover an axis of one tile and `rest` pixels more, in strides of `stride`.
std::int64_t countTiles(std::int64_t rest, double stride) {
    const std::int32_t strides = truncateToInt(static_cast<double>(rest) / stride + 0.85);
    // A stride of 0 asks for no finite number of tiles.
    const bool isFinite = strides < std::numeric_limits<std::int32_t>::max();
    return isFinite ? std::max<std::int64_t>(std::int64_t{strides} + 1, 2) : 2;
}

/// As few tiles of `tileLength` as overlap by about a share 1 - `keep`, spread over the axis.
TileGeometry planEqualTiles(std::int64_t total, std::int64_t tileLength, double keep) {
    const double stride = static_cast<double>(tileLength) * keep;
    const std::int64_t rest = total - tileLength;
    const std::int64_t count = countTiles(rest, stride);
    // The quotient plus one exceeds rest / (count - 1): these steps always reach the end.
    const std::int64_t spread = rest / (count - 1) + 1;
    const std::int64_t step = spread < tileLength ? spread : truncateToInt(stride);
    return {narrowToInt32(count), narrowToInt32(tileLength), narrowToInt32(step)};
}

/// A multiple of 16 also becomes the next one: 512 gives 528.
std::int64_t nextMultipleOf16(std::int64_t length) {
    return (length / 16 + 1) * 16;
}

} // namespace

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
