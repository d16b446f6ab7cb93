#include "restoration/tiles/samplePatches.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace restoration {
namespace {

/// A window along an axis, and the pixels of it to look at.
struct AxisPatch {
    int windowBegin = 0;
    int windowEnd = 0;
    int keptBegin = 0;
    int keptEnd = 0;
};

bool holdsWholeAxis(int length, const PatchRules& rules) noexcept {
    return std::int64_t{length} + 2 * rules.beyond <= rules.window;
}

/// The patch in the middle of cell `cell` of `cells`.
AxisPatch axisPatch(int length, int cell, int cells, const PatchRules& rules) noexcept {
    if (holdsWholeAxis(length, rules)) {
        return {-rules.beyond, length + rules.beyond, 0, length};
    }
    const int window = std::min(length, rules.window);
    const std::int64_t middle = (2 * std::int64_t{cell} + 1) * length / (2 * std::int64_t{cells});
    const int begin =
        static_cast<int>(std::clamp<std::int64_t>(middle - window / 2, 0, length - window));
    // The frame is no better than the end of a window: it is not continued here.
    return {begin, begin + window, begin + rules.margin, begin + window - rules.margin};
}

/// Cells along an axis: no more than windows that fit beside each other.
int cellsAlong(int length, int largest, const PatchRules& rules) noexcept {
    return std::clamp(length / rules.window, 1, std::max(1, largest));
}

} // namespace

std::vector<Patch> samplePatches(const TileLoader& loader, const PatchRules& rules) {
    const int width = loader.picture().width();
    const int height = loader.picture().height();
    const double aspect = static_cast<double>(width) / height;
    const double wanted = std::sqrt(rules.largestCount * aspect);
    const int perRow = static_cast<int>(std::clamp(wanted, 1.0, double(rules.largestCount)));
    const int columns = cellsAlong(width, perRow, rules);
    const int rows = cellsAlong(height, rules.largestCount / columns, rules);

    std::vector<Patch> patches;
    for (int row = 0; row < rows; ++row) {
        const AxisPatch y = axisPatch(height, row, rows, rules);
        for (int column = 0; column < columns; ++column) {
            const AxisPatch x = axisPatch(width, column, columns, rules);
            Patch& patch = patches.emplace_back();
            patch.kept = {x.keptBegin, y.keptBegin, x.keptEnd - x.keptBegin,
                          y.keptEnd - y.keptBegin};
            loader.load({x.windowBegin, y.windowBegin, x.windowEnd - x.windowBegin,
                         y.windowEnd - y.windowBegin},
                        patch.tile);
        }
    }
    return patches;
}

} // namespace restoration
