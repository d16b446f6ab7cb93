#include "velimproclib/primitives/arithmetic/Histogram.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace vel {
namespace {

using Counts = std::array<std::int64_t, 256>;

Counts countPixels(const std::uint8_t* src, std::int32_t step, std::int32_t w, std::int32_t h) {
    // Neighbouring pixels are often equal. With separate tables, an increment need not wait for the
    // one before.
    std::array<Counts, 4> tables{};
    const Extent extent = joinAdjacentRows(w, h, {{step, 1}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const std::uint8_t* row = rowAt(src, step, y);
        std::size_t x = 0;
        for (; x + 4 <= extent.columns; x += 4) {
            for (std::size_t i = 0; i < 4; ++i) {
                ++tables[i][row[x + i]];
            }
        }
        for (; x < extent.columns; ++x) {
            ++tables[0][row[x]];
        }
    }
    for (std::size_t value = 0; value < tables[0].size(); ++value) {
        tables[0][value] += tables[1][value] + tables[2][value] + tables[3][value];
    }
    return tables[0];
}

void fillLevels(std::int32_t* levels, std::int32_t n, std::int32_t lower, std::int32_t upper) {
    const std::int64_t range = static_cast<std::int64_t>(upper) - lower;
    const std::int64_t intervals = static_cast<std::int64_t>(n) - 1;
    std::int64_t width = range / intervals;
    std::int64_t left = range % intervals;
    if (left < 0) {
        left += intervals;
        --width;
    }
    std::int64_t level = lower;
    for (std::int32_t k = 0; k < n; ++k) {
        levels[k] = static_cast<std::int32_t>(level);
        level += width + (k < left ? 1 : 0);
    }
}

std::int32_t countBetween(const Counts& counts, std::int32_t from, std::int32_t to) {
    const std::int32_t first = std::clamp(from, 0, 256);
    const std::int32_t end = std::clamp(to, 0, 256);
    std::int64_t sum = 0;
    for (std::int32_t value = first; value < end; ++value) {
        sum += counts[static_cast<std::size_t>(value)];
    }
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

Status histogramEvenU8(const std::uint8_t* src, std::int32_t step, std::int32_t w, std::int32_t h,
                       std::int32_t* hist, std::int32_t* levels, std::int32_t n, std::int32_t lower,
                       std::int32_t upper) noexcept {
    if (const Status status = checkArguments({src, hist, levels}, {w, h}, {step})) {
        return status;
    }
    if (n < 2) {
        return kTooFewHistogramLevels;
    }
    fillLevels(levels, n, lower, upper);
    const Counts counts = countPixels(src, step, w, h);
    for (std::int32_t k = 0; k + 1 < n; ++k) {
        hist[k] = countBetween(counts, levels[k], levels[k + 1]);
    }
    return kOk;
}

} // namespace vel
