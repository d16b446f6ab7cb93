#include "restoration/strength/strengthPatches.h"

#include "restoration/tiles/tileMargin.h"

#include <algorithm>
#include <cstdint>

namespace restoration {
namespace {

constexpr int kSmallestSide = 256;
/// Patches of the smallest side in large pictures.
constexpr std::int64_t kMostPatches = 24;
/// The share of the picture that is looked at, at most: a search restores patches about eight
/// times.
constexpr std::int64_t kShare = 2;

} // namespace

StrengthPatches strengthPatches(int kernelSide, int width, int height) noexcept {
    int side = kSmallestSide;
    while (side < 4 * kernelSide) {
        side *= 2;
    }
    const std::int64_t pixels = std::int64_t{width} * height;
    const std::int64_t patchPixels = std::int64_t{side} * side;
    const std::int64_t scale = patchPixels / (kSmallestSide * kSmallestSide);
    const std::int64_t most = std::min(kMostPatches / scale, pixels / (kShare * patchPixels));
    // Unknown pixels are estimated in every patch: no margin as wide as those of tiles is needed.
    constexpr int kMargin = 8;
    return {side,
            {static_cast<int>(std::max<std::int64_t>(most, 1)), side - tileRing(kernelSide),
             kMargin, kernelSide}};
}

} // namespace restoration
