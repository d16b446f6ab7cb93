#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/secondpass/blockRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/secondpass/blockRows.h"
#include "restoration/secondpass/Dct8-inl.h"

#include <algorithm>
#include <cstddef>

// How a row of blocks is filtered. Vertical transforms come first: one per column, shared by all
// blocks that contain it. Each vertical frequency is then a line, and the blocks are transformed
// horizontally along the eight lines, one block per lane. After the shrinkage the blocks are
// transformed back horizontally and summed along the lines. The inverse vertical transform is
// linear, therefore one per column serves all blocks again.
//
// A sum along a line receives its blocks from left to right on every processor: within a group of
// lanes the columns of the blocks are added from the last to the first.

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

/// Coefficients that the shrinkage keeps at hand for one vector of blocks.
using GroupCoefficients = float[64 * 16];

/// The least factor of the noise of a block: dark blocks count as no cleaner.
constexpr float kLeastFactor = 1e-3f;

/// The factor of the noise of blocks, from their first coefficients, which are 64 times the mean.
HWY_INLINE LaneVec noiseFactor(const HardLimits& limits, LaneVec mean64) {
    const LaneTag d;
    const LaneVec least = hn::Set(d, kLeastFactor);
    const LaneVec factor = hn::Add(hn::Set(d, limits.base), times(limits.slope / 64, mean64));
    return hn::IfThenElse(hn::Gt(factor, least), factor, least); // `least` for a NaN, too
}

/// Sets the coefficients of vertical frequency `v` that are not above the noise to 0, adds the
/// variances of the others to `remaining`. `root` is the root of the factor of the noise.
HWY_INLINE void shrink(const HardLimits& limits, std::size_t v, LaneVec root, Eight& x,
                       LaneVec& remaining) {
    const LaneTag d;
    for (std::size_t u = v == 0 ? 1 : 0; u < 8; ++u) {
        const std::size_t k = 8 * v + u;
        const auto isKept = hn::Gt(hn::Abs(x.v[u]), times(limits.limits[k], root));
        x.v[u] = hn::IfThenElseZero(isKept, x.v[u]);
        remaining = hn::Add(remaining, hn::IfThenElseZero(isKept, hn::Set(d, limits.variances[k])));
    }
}

} // namespace

void shrinkLanes(const float* HWY_RESTRICT lines, const PhasedLine& line, std::size_t firstColumn,
                 const HardLimits& limits, float* HWY_RESTRICT sums, float* HWY_RESTRICT weights) {
    const LaneTag d;
    const std::size_t lineFloats = line.floats();
    std::size_t places[8];
    for (std::size_t c = 0; c < 8; ++c) {
        places[c] = line.placeOf(firstColumn + c);
    }
    alignas(64) GroupCoefficients coefficients;
    for (std::size_t block = 0; block < line.phaseColumns(); block += kVectorLanes) {
        LaneVec remaining = hn::Set(d, limits.variances[0]);
        LaneVec factor = hn::Zero(d);
        LaneVec root = hn::Zero(d);
        for (std::size_t v = 0; v < 8; ++v) {
            Eight x;
            for (std::size_t c = 0; c < 8; ++c) {
                x.v[c] = hn::LoadU(d, lines + v * lineFloats + places[c] + block);
            }
            forwardDct8(x);
            if (v == 0) {
                factor = noiseFactor(limits, x.v[0]);
                root = hn::Sqrt(factor);
            }
            shrink(limits, v, root, x, remaining);
            storeEight(x, coefficients + v * 8 * kVectorLanes, kVectorLanes);
        }
        const LaneVec weight = hn::Div(hn::Set(d, 1.0f), hn::Mul(remaining, factor));
        for (std::size_t v = 0; v < 8; ++v) {
            Eight x = loadEight(coefficients + v * 8 * kVectorLanes, kVectorLanes);
            inverseDct8(x);
            for (std::size_t c = 8; c-- > 0;) {
                float* sum = sums + v * lineFloats + places[c] + block;
                hn::StoreU(hn::Add(hn::LoadU(d, sum), hn::Mul(weight, x.v[c])), d, sum);
            }
        }
        for (std::size_t c = 8; c-- > 0;) {
            float* sum = weights + places[c] + block;
            hn::StoreU(hn::Add(hn::LoadU(d, sum), weight), d, sum);
        }
    }
}

/// The vertical transforms of the eight rows `rows`, which hold their phases without gaps.
void forwardLanes(const float* const* rows, const PhasedLine& line, float* HWY_RESTRICT lines) {
    for (std::size_t phase = 0; phase < line.step; ++phase) {
        const std::size_t from = phase * line.phaseColumns();
        float* to = lines + phase * line.pitch();
        for (std::size_t i = 0; i < line.phaseColumns(); i += kVectorLanes) {
            Eight x;
            for (std::size_t r = 0; r < 8; ++r) {
                x.v[r] = hn::LoadU(LaneTag(), rows[r] + from + i);
            }
            forwardDct8(x);
            storeEight(x, to + i, line.floats());
        }
        for (std::size_t v = 0; v < 8; ++v) {
            std::copy_n(to + v * line.floats(), PhasedLine::kWrap,
                        to + v * line.floats() + line.phaseColumns());
        }
    }
}

/// Adds the inverse vertical transforms of `lines` to the eight rows `sums`, and `weightLine` to
/// the rows `weights`.
void addInverseLanes(const float* HWY_RESTRICT lines, const float* HWY_RESTRICT weightLine,
                     const PhasedLine& line, float* const* sums, float* const* weights) {
    const LaneTag d;
    for (std::size_t phase = 0; phase < line.step; ++phase) {
        const std::size_t from = phase * line.pitch();
        const std::size_t to = phase * line.phaseColumns();
        for (std::size_t i = 0; i < line.phaseColumns(); i += kVectorLanes) {
            Eight x = loadEight(lines + from + i, line.floats());
            inverseDct8(x);
            const LaneVec weight = hn::LoadU(d, weightLine + from + i);
            for (std::size_t r = 0; r < 8; ++r) {
                float* sum = sums[r] + to + i;
                hn::StoreU(hn::Add(hn::LoadU(d, sum), x.v[r]), d, sum);
                float* weightSum = weights[r] + to + i;
                hn::StoreU(hn::Add(hn::LoadU(d, weightSum), weight), d, weightSum);
            }
        }
    }
}

void divideLanes(const float* HWY_RESTRICT weights, float* HWY_RESTRICT sum, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        sum[i] = sum[i] / weights[i] * (1.0f / 64);
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(shrinkLanes);
HWY_EXPORT(forwardLanes);
HWY_EXPORT(addInverseLanes);
HWY_EXPORT(divideLanes);

void shrinkBlocks(const float* lines, const PhasedLine& line, std::size_t firstColumn,
                  const HardLimits& limits, float* sums, float* weights) noexcept {
    HWY_DYNAMIC_DISPATCH(shrinkLanes)
    (lines, line, firstColumn, limits, sums, weights);
}

void forwardVertical(const float* const* rows, const PhasedLine& line, float* lines) noexcept {
    HWY_DYNAMIC_DISPATCH(forwardLanes)(rows, line, lines);
}

void addInverseVertical(const float* lines, const float* weightLine, const PhasedLine& line,
                        float* const* sums, float* const* weights) noexcept {
    HWY_DYNAMIC_DISPATCH(addInverseLanes)(lines, weightLine, line, sums, weights);
}

void divideByWeights(const float* weights, float* sum, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(divideLanes)(weights, sum, count);
}

} // namespace restoration
#endif
