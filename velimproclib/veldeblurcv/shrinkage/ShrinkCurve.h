#pragma once

#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <array>
#include <cstddef>

namespace vel {

/// A stored polyline prepared for `shrinkDifferenceRow`. Segments are numbered from -10 upwards;
/// the middle one is the dead zone, where the function is 0. Each segment is anchored at its end
/// nearer to zero.
struct ShrinkCurve {
    explicit ShrinkCurve(const StoredShrink& stored) noexcept;

    static constexpr std::size_t kMaxSideKnots = 10;
    static constexpr std::size_t kMaxSegments = 32; ///< 21, padded to whole registers

    float deadFrom;        ///< begin of the dead zone: the last knot of the negative side
    float deadTo;          ///< end of the dead zone: the first knot of the positive side
    float first;           ///< smaller gradients are raised to this value
    float last;            ///< this gradient and larger ones give `last`
    std::size_t sideKnots; ///< knots of each side without its end
    std::array<float, kMaxSideKnots> negativeKnots;     ///< increasing; `sideKnots` are in use
    std::array<float, kMaxSideKnots> positiveKnots;     ///< the same; the first is `deadTo`
    alignas(64) std::array<float, kMaxSegments> anchor; ///< abscissa of a segment's nearer end
    alignas(64) std::array<float, kMaxSegments> slope;  ///< rise over run of a segment
    alignas(64) std::array<float, kMaxSegments> value;  ///< ordinate of a segment's nearer end
};

/// w[i] = shrink(minuend[i] - subtrahend[i]) for i < count: the shrunk gradients of a row. The
/// sources may overlap each other; `w` overlaps neither.
///
/// This is the linear lookup of the stored polyline after a clamp to its range, evaluated in single
/// precision. The result is within 2 units in the last place of an evaluation in double that is
/// rounded once: with a segment anchored at its end nearer to zero, its value there and slope times
/// distance have the same sign, and nothing cancels. A NaN stays a NaN. All processor variants give
/// the same bits.
void shrinkDifferenceRow(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                         float* w, std::size_t count) noexcept;

} // namespace vel
