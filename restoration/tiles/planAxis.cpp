#include "restoration/tiles/planAxis.h"

#include <cstddef>
#include <cstdint>

namespace restoration {
namespace {

/// The first pixels of `count` windows that cover `total` pixels from `begin` on.
std::vector<int> spreadWindows(std::int64_t begin, std::int64_t total, std::int64_t window,
                               std::int64_t count) {
    std::vector<int> begins;
    for (std::int64_t i = 0; i < count; ++i) {
        begins.push_back(static_cast<int>(begin + i * (total - window) / (count - 1)));
    }
    return begins;
}

/// A smooth step from 0 to 1 over `length` pixels, at the middle of pixel `i`.
float smoothStep(int i, int length) noexcept {
    const float t = (static_cast<float>(i) + 0.5f) / static_cast<float>(length);
    return t * t * (3.0f - 2.0f * t);
}

} // namespace

std::vector<AxisTile> planAxis(int length, const AxisRules& rules) {
    const std::int64_t total = std::int64_t{length} + 2 * rules.beyond;
    if (total <= rules.window) {
        return {{-rules.beyond, length + rules.beyond, 0, length, 0, 0}};
    }
    const std::int64_t largestStep = rules.window - 2 * rules.margin - rules.overlap;
    const std::int64_t steps = (total - rules.window + largestStep - 1) / largestStep;
    const std::vector<int> begins = spreadWindows(-rules.beyond, total, rules.window, steps + 1);

    std::vector<AxisTile> tiles;
    for (const int begin : begins) {
        tiles.push_back({begin, begin + rules.window, 0, length, 0, 0});
    }
    for (std::size_t i = 0; i + 1 < tiles.size(); ++i) {
        AxisTile& before = tiles[i];
        AxisTile& after = tiles[i + 1];
        // The middle of the pixels that both tiles could keep has the widest margins.
        const int middle =
            static_cast<int>((std::int64_t{after.windowBegin} + before.windowEnd) / 2);
        after.keptBegin = middle - rules.overlap / 2;
        before.keptEnd = middle + rules.overlap / 2;
        before.fadeAfter = rules.overlap;
        after.fadeBefore = rules.overlap;
    }
    return tiles;
}

float axisWeight(const AxisTile& tile, int position) noexcept {
    const int fromBegin = position - tile.keptBegin;
    const int fromEnd = tile.keptEnd - 1 - position;
    if (fromBegin < tile.fadeBefore) {
        return smoothStep(fromBegin, tile.fadeBefore);
    }
    if (fromEnd < tile.fadeAfter) {
        return smoothStep(fromEnd, tile.fadeAfter);
    }
    return 1.0f;
}

} // namespace restoration
