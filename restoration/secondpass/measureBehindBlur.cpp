#include "restoration/secondpass/measureBehindBlur.h"

#include "restoration/secondpass/NoiseBehindBlur.h"

#include <algorithm>

namespace restoration {
namespace {

constexpr int kSquare = NoiseBehindBlur::kSide;
constexpr int kStep = kSquare / 2;
constexpr int kWindow = 3 * kSquare / 2; // of a patch: four squares that overlap by half
constexpr int kTileSide = 256;
constexpr int kMostPatches = 25;

bool isKnown(const Mask& known, int x, int y) {
    for (int row = y; row < y + kSquare; ++row) {
        const std::uint8_t* first = known.row(row) + x;
        if (std::find(first, first + kSquare, std::uint8_t{0}) != first + kSquare) {
            return false;
        }
    }
    return true;
}

} // namespace

std::vector<Patch> noisePatches(const TileLoader& loader) {
    const TileLoader small(loader.picture(), kTileSide, loader.rules());
    return samplePatches(small, {kMostPatches, kWindow, 0, 0});
}

std::optional<float> measureBehindBlur(std::span<const Patch> patches, std::size_t plane,
                                       const Kernel& kernel) {
    NoiseBehindBlur noise(kernel);
    for (const Patch& patch : patches) {
        const int left = patch.kept.x - patch.tile.window.x;
        const int top = patch.kept.y - patch.tile.window.y;
        for (int y = top; y + kSquare <= top + patch.kept.height; y += kStep) {
            for (int x = left; x + kSquare <= left + patch.kept.width; x += kStep) {
                if (isKnown(patch.tile.known, x, y)) {
                    noise.add(patch.tile.planes[plane], x, y);
                }
            }
        }
    }
    const std::optional<float> deviation = noise.deviation();
    return deviation ? std::optional(255 * *deviation) : std::nullopt;
}

} // namespace restoration
