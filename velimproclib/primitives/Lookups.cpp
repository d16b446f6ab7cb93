#include "velimproclib/primitives/Lookups.h"

#include "velimproclib/primitives/argumentChecks.h"
#include "velimproclib/primitives/lookupPieces.h"
#include "velimproclib/primitives/rows.h"

#include <algorithm>

namespace vel {
namespace {

constexpr std::int32_t kNone = -1;

/// Finds the interval of a pixel.
class IntervalSearch {
public:
    IntervalSearch(const float* levels, std::int32_t n)
        : m_levels(levels), m_n(n), m_rising(rising(levels, n)) {}

    /// The first k with levels[k] <= v < levels[k + 1], or `kNone`.
    std::int32_t intervalOf(float v) const { return m_rising ? bisect(v) : scan(v); }

private:
    static bool rising(const float* levels, std::int32_t n) {
        for (std::int32_t k = 0; k + 1 < n; ++k) {
            if (!(levels[k] <= levels[k + 1])) {
                return false;
            }
        }
        return true;
    }

    std::int32_t bisect(float v) const {
        if (!(v >= m_levels[0] && v < m_levels[m_n - 1])) {
            return kNone;
        }
        return static_cast<std::int32_t>(std::upper_bound(m_levels, m_levels + m_n, v) - m_levels) -
               1;
    }

    std::int32_t scan(float v) const {
        for (std::int32_t k = 0; k + 1 < m_n; ++k) {
            if (m_levels[k] <= v && v < m_levels[k + 1]) {
                return k;
            }
        }
        return kNone;
    }

    const float* m_levels;
    std::int32_t m_n;
    bool m_rising;
};

/// Looks every pixel up with `pieceOf(k)` made anew for each: any number of levels, no memory.
template <class PieceOf>
void lookUpRows(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                Extent extent, const IntervalSearch& search, PieceOf pieceOf) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = unaligned(rowAt(src, srcStep, y));
        auto* dstRow = unaligned(rowAt(dst, dstStep, y));
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const float v = srcRow[x].value;
            const std::int32_t k = search.intervalOf(v);
            dstRow[x].value = k == kNone ? v : static_cast<float>(pieceOf(k).at(v));
        }
    }
}

} // namespace

Status lutLinearF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* values, const float* levels,
                    std::int32_t n) noexcept {
    if (const Status status =
            checkArguments({src, dst, values, levels}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (n < 2) {
        return kTooFewLutLevels;
    }
    const Extent extent =
        joinAdjacentRows(w, h, {{srcStep, sizeof(float)}, {dstStep, sizeof(float)}});
    lookUpRows(src, srcStep, dst, dstStep, extent, IntervalSearch(levels, n),
               [=](std::int32_t k) { return linePiece(values, levels, k); });
    return kOk;
}

Status lutCubicInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                          const float* values, const float* levels, std::int32_t n) noexcept {
    constexpr std::int32_t kCubicKnots = 4;
    if (n < kCubicKnots) {
        return lutLinearF32(srcDst, step, srcDst, step, w, h, values, levels, n);
    }
    if (const Status status = checkArguments({srcDst, values, levels}, {w, h}, {step})) {
        return status;
    }
    lookUpRows(srcDst, step, srcDst, step, joinAdjacentRows(w, h, {{step, sizeof(float)}}),
               IntervalSearch(levels, n),
               [=](std::int32_t k) { return cubicPiece(values, levels, n, k); });
    return kOk;
}

} // namespace vel
