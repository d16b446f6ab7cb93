#pragma once

#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <array>
#include <cstddef>

namespace vel {

/// A stored polyline prepared for `shrinkDifferenceRow`. Segments are numbered from -10 upwards,
/// the dead zone in the middle, in which the function is 0. Each is anchored at its end nearer to
/// zero.
struct ShrinkCurve {
    explicit ShrinkCurve(const StoredShrink& stored) noexcept;

    static constexpr std::size_t kMaxSideKnots = 10;
    static constexpr std::size_t kMaxSegments = 32; ///< 21, filled up to whole registers

    float deadFrom;        ///< the last knot of the negative side: the dead zone begins with it
    float deadTo;          ///< the first knot of the positive side: the dead zone ends with it
    float first;           ///< smaller gradients are taken as this one
    float last;            ///< this gradient and larger ones give `last`
    std::size_t sideKnots; ///< of each side, the end apart
    std::array<float, kMaxSideKnots> negativeKnots;     ///< increasing; `sideKnots` are in use
    std::array<float, kMaxSideKnots> positiveKnots;     ///< the same; the first is `deadTo`
    alignas(64) std::array<float, kMaxSegments> anchor; ///< abscissa of a segment's nearer end
    alignas(64) std::array<float, kMaxSegments> slope;  ///< rise over run of a segment
    alignas(64) std::array<float, kMaxSegments> value;  ///< ordinate of a segment's nearer end
};

/// w[i] = shrink(minuend[i] - subtrahend[i]) for i < count: the shrunk gradients of a row. The
/// sources may overlap each other; `w` lies apart.
///
/// The same as the two clamps and the linear lookup of the stored polyline, but evaluated in single
/// precision: as value and slope times distance have one sign when a segment is anchored at the end
/// nearer to zero, nothing cancels, and the result is within 2 units in the last place of an
/// evaluation in double that is rounded once. Not-a-number stays what it is. The same bits on every
/// processor variant.
void shrinkDifferenceRow(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                         float* w, std::size_t count) noexcept;

} // namespace vel
