#include "restoration/light/LightPatch.h"

#include "restoration/tiles/samplePatches.h"
#include "restoration/tiles/tileMargin.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace restoration {
namespace {

constexpr int kSmallestSide = 128;
constexpr int kLeastKept = 64;
/// As in `clippedValues` for integers. Floats above are bright, and of little use here.
constexpr float kClipped = 1.0f - 0.5f / 255.0f;

/// Half a kernel and a little: what lies beyond the window reaches no farther.
int marginOf(int kernelSide) noexcept {
    return kernelSide / 2 + 2;
}

int windowOf(int side, int kernelSide) noexcept {
    return side - tileRing(kernelSide);
}

int sideFor(int kernelSide) noexcept {
    int side = kSmallestSide;
    while (windowOf(side, kernelSide) - 2 * marginOf(kernelSide) < kLeastKept) {
        side *= 2;
    }
    return side;
}

/// Clears `flags` within `reach` columns and rows of the pixels where `isSource(x, y)`.
template <class IsSource>
void clearAround(Mask& flags, int width, int height, int reach, const IsSource& isSource) {
    // The distance along a row to the next source at the left and right, then along columns.
    std::vector<std::uint8_t> isNear(static_cast<std::size_t>(width) *
                                     static_cast<std::size_t>(height));
    const auto at = [&](int x, int y) -> std::uint8_t& {
        return isNear[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    };
    const auto sweep = [reach](int length, const auto& source, const auto& mark) {
        int last = -reach - 1;
        for (int i = 0; i < length; ++i) {
            last = source(i) ? i : last;
            if (i - last <= reach) {
                mark(i);
            }
        }
        last = length + reach;
        for (int i = length - 1; i >= 0; --i) {
            last = source(i) ? i : last;
            if (last - i <= reach) {
                mark(i);
            }
        }
    };
    for (int y = 0; y < height; ++y) {
        sweep(
            width, [&](int x) { return isSource(x, y); }, [&](int x) { at(x, y) = 1; });
    }
    for (int x = 0; x < width; ++x) {
        sweep(
            height, [&](int y) { return at(x, y) != 0; }, [&](int y) { flags.row(y)[x] = 0; });
    }
}

LightPatch patchOf(Patch& patch, std::size_t channel, int kernelSide) {
    Tile& tile = patch.tile;
    LightPatch result;
    result.width = tile.window.width;
    result.height = tile.window.height;
    result.isIncomplete = tile.isIncomplete;
    result.display = std::move(tile.planes[channel]);
    result.known = std::move(tile.known);
    result.counted = Mask(tile.side, tile.side);
    const Rect kept{patch.kept.x - tile.window.x, patch.kept.y - tile.window.y, patch.kept.width,
                    patch.kept.height};
    for (int y = kept.y; y < kept.bottom(); ++y) {
        std::copy_n(result.known.row(y) + kept.x, kept.width, result.counted.row(y) + kept.x);
    }
    clearAround(result.counted, result.width, result.height, marginOf(kernelSide),
                [&](int x, int y) { return result.display.row(y)[x] >= kClipped; });
    for (int y = 0; y < tile.side; ++y) {
        result.countedPixels += static_cast<std::size_t>(
            std::count(result.counted.row(y), result.counted.row(y) + tile.side, 1));
    }
    return result;
}

/// The sum of the absolute differences of counted pixels.
double detailOf(const LightPatch& patch) {
    double detail = 0.0;
    for (int y = 0; y + 1 < patch.height; ++y) {
        const float* row = patch.display.row(y);
        const float* below = patch.display.row(y + 1);
        for (int x = 0; x + 1 < patch.width; ++x) {
            if (patch.counted.row(y)[x] != 0) {
                detail += static_cast<double>(std::abs(row[x + 1] - row[x]) +
                                              std::abs(below[x] - row[x]));
            }
        }
    }
    return detail;
}

} // namespace

std::vector<LightPatch> lightPatches(const PictureReader& picture, std::size_t channel,
                                     const Kernel& kernel) {
    const int kernelSide = kernel.largerSide();
    const int side = sideFor(kernelSide);
    const int wanted = std::max(1, 8 * kSmallestSide / side);
    const TileLoader loader(picture, side, {});
    std::vector<Patch> samples = samplePatches(
        loader, {3 * wanted, windowOf(side, kernelSide), marginOf(kernelSide), kernelSide});

    std::vector<LightPatch> patches;
    std::vector<std::pair<double, std::size_t>> ranks;
    for (Patch& sample : samples) {
        LightPatch patch = patchOf(sample, channel, kernelSide);
        if (patch.countedPixels > 0) {
            ranks.emplace_back(-detailOf(patch), patches.size());
            patches.push_back(std::move(patch));
        }
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.resize(std::min(ranks.size(), static_cast<std::size_t>(wanted)));
    std::vector<LightPatch> best;
    for (const auto& [rank, index] : ranks) {
        best.push_back(std::move(patches[index]));
    }
    return best;
}

} // namespace restoration
