#pragma once

#include "velimproclib/veldeblurcv/ShrinkTable.h"

#include <array>
#include <cstddef>

namespace vel {

/// A stored polyline prepared for `shrinkRow`: the segments of each side in the order in which they
/// lie from the dead zone outwards, each anchored at its end nearer to zero. Between the first
/// anchors of the two sides the function is 0.
struct ShrinkCurve {
    static constexpr std::size_t kMaxSegments = 10;

    struct Side {
        std::array<float, kMaxSegments> anchor;
        std::array<float, kMaxSegments> slope;
        std::array<float, kMaxSegments> value;
    };

    explicit ShrinkCurve(const StoredShrink& stored) noexcept;

    std::size_t segments; ///< of each side
    float first;          ///< smaller gradients are taken as this one
    float last;           ///< this gradient and larger ones give `last`
    Side negative;
    Side positive;
};

/// w[i] = shrink(v[i]) for i < count; `w` may be `v`, otherwise they lie apart. The same as the two
/// clamps and the linear lookup of the stored polyline, but evaluated in single precision: as value
/// and slope times distance have one sign when a segment is anchored at the end nearer to zero,
/// nothing cancels, and the result is within 2 units in the last place of an evaluation in double
/// that is rounded once. Not-a-number stays what it is. The same bits on every processor variant.
void shrinkRow(const ShrinkCurve& curve, const float* v, float* w, std::size_t count) noexcept;

/// w[i] = shrink(minuend[i] - subtrahend[i]): the shrunk gradients of a row. The sources may
/// overlap each other; `w` lies apart.
void shrinkDifferenceRow(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                         float* w, std::size_t count) noexcept;

} // namespace vel
