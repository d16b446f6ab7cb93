#include "restoration/strength/strengthPatches.h"

#include "restoration/tiles/tileMargin.h"

#include <algorithm>
#include <cstdint>

namespace restoration {
namespace {

constexpr int kSmallestSide = 128;
constexpr int kUsualSide = 256;
constexpr std::int64_t kMostPatches = 24;

std::int64_t pixelsOf(int side) noexcept {
    return std::int64_t{side} * side;
}

} // namespace

StrengthPatches strengthPatches(int kernelSide, int width, int height) noexcept {
    // A search restores the patches about eight times, therefore they cover half a picture at most.
    const std::int64_t pixels = std::int64_t{width} * height / 2;
    int side = kSmallestSide;
    while (side < 4 * kernelSide) {
        side *= 2;
    }
    // Many small patches represent a small picture better than a few large ones.
    if (side < kUsualSide && pixels / pixelsOf(side) > kMostPatches) {
        side = kUsualSide;
    }
    const std::int64_t scale = std::max<std::int64_t>(1, pixelsOf(side) / pixelsOf(kUsualSide));
    const std::int64_t most = std::min(kMostPatches / scale, pixels / pixelsOf(side));
    // Unknown pixels are estimated in every patch: no margin as wide as those of tiles is needed.
    constexpr int kMargin = 8;
    return {side,
            {static_cast<int>(std::max<std::int64_t>(most, 1)), side - tileRing(kernelSide),
             kMargin, kernelSide}};
}

} // namespace restoration
