// Included once for each processor variant.

#if defined(VELORN_SECONDPASS_DCT8_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_SECONDPASS_DCT8_INL_H
#undef VELORN_SECONDPASS_DCT8_INL_H
#else
#define VELORN_SECONDPASS_DCT8_INL_H
#endif

#include <cstddef>
#include <hwy/highway.h>

// The cosine transform of eight samples, one transform per lane, by the factorisation of Chen,
// Smith and Fralick (A fast computational algorithm for the discrete cosine transform, IEEE
// Transactions on Communications, 1977): 14 products and 26 sums. Both directions are sqrt(8) times
// the orthonormal transform, hence in two dimensions 8 times; the factors are powers of two there
// and cost no rounding.

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using LaneTag = HWY_CAPPED(float, 16);
using LaneVec = hn::Vec<LaneTag>;
inline constexpr std::size_t kVectorLanes = hn::MaxLanes(LaneTag());

/// sqrt(2) cos(k pi / 16), and cos(pi / 4)
inline constexpr float kCos1 = 1.38703984532214746f;
inline constexpr float kCos2 = 1.30656296487637652f;
inline constexpr float kCos3 = 1.17587560241935872f;
inline constexpr float kCos5 = 0.78569495838710218f;
inline constexpr float kCos6 = 0.54119610014619698f;
inline constexpr float kCos7 = 0.27589937928294301f;
inline constexpr float kHalfRoot = 0.70710678118654752f;

/// Eight samples, or their eight frequencies, of each lane.
struct Eight {
    LaneVec v[8];
};

HWY_INLINE LaneVec times(float factor, LaneVec x) {
    return hn::Mul(hn::Set(LaneTag(), factor), x);
}
/// a x + b y
HWY_INLINE LaneVec turn(float a, LaneVec x, float b, LaneVec y) {
    return hn::Add(times(a, x), times(b, y));
}
/// a x - b y
HWY_INLINE LaneVec turnBack(float a, LaneVec x, float b, LaneVec y) {
    return hn::Sub(times(a, x), times(b, y));
}

/// Samples to frequencies.
HWY_INLINE void forwardDct8(Eight& x) {
    const LaneVec s0 = hn::Add(x.v[0], x.v[7]);
    const LaneVec s1 = hn::Add(x.v[1], x.v[6]);
    const LaneVec s2 = hn::Add(x.v[2], x.v[5]);
    const LaneVec s3 = hn::Add(x.v[3], x.v[4]);
    const LaneVec d0 = hn::Sub(x.v[0], x.v[7]);
    const LaneVec d1 = hn::Sub(x.v[1], x.v[6]);
    const LaneVec d2 = hn::Sub(x.v[2], x.v[5]);
    const LaneVec d3 = hn::Sub(x.v[3], x.v[4]);

    const LaneVec outer = hn::Add(s0, s3);
    const LaneVec inner = hn::Add(s1, s2);
    const LaneVec innerStep = hn::Sub(s1, s2);
    const LaneVec outerStep = hn::Sub(s0, s3);
    x.v[0] = hn::Add(outer, inner);
    x.v[4] = hn::Sub(outer, inner);
    x.v[2] = turn(kCos2, outerStep, kCos6, innerStep);
    x.v[6] = turnBack(kCos6, outerStep, kCos2, innerStep);

    const LaneVec sum = times(kHalfRoot, hn::Add(d1, d2));
    const LaneVec difference = times(kHalfRoot, hn::Sub(d1, d2));
    const LaneVec p = hn::Add(d0, sum);
    const LaneVec r = hn::Sub(d0, sum);
    const LaneVec q = hn::Add(d3, difference);
    const LaneVec u = hn::Sub(d3, difference);
    x.v[1] = turn(kCos1, p, kCos7, q);
    x.v[7] = turnBack(kCos7, p, kCos1, q);
    x.v[3] = turnBack(kCos3, r, kCos5, u);
    x.v[5] = turn(kCos5, r, kCos3, u);
}

/// Frequencies to samples: the transposed flow.
HWY_INLINE void inverseDct8(Eight& x) {
    const LaneVec outer = hn::Add(x.v[0], x.v[4]);
    const LaneVec inner = hn::Sub(x.v[0], x.v[4]);
    const LaneVec outerStep = turn(kCos2, x.v[2], kCos6, x.v[6]);
    const LaneVec innerStep = turnBack(kCos6, x.v[2], kCos2, x.v[6]);
    const LaneVec s0 = hn::Add(outer, outerStep);
    const LaneVec s3 = hn::Sub(outer, outerStep);
    const LaneVec s1 = hn::Add(inner, innerStep);
    const LaneVec s2 = hn::Sub(inner, innerStep);

    const LaneVec p = turn(kCos1, x.v[1], kCos7, x.v[7]);
    const LaneVec q = turnBack(kCos7, x.v[1], kCos1, x.v[7]);
    const LaneVec r = turn(kCos3, x.v[3], kCos5, x.v[5]);
    const LaneVec u = turnBack(kCos3, x.v[5], kCos5, x.v[3]);
    const LaneVec sum = hn::Sub(p, r);
    const LaneVec difference = hn::Sub(q, u);
    const LaneVec d0 = hn::Add(p, r);
    const LaneVec d3 = hn::Add(q, u);
    const LaneVec d1 = times(kHalfRoot, hn::Add(sum, difference));
    const LaneVec d2 = times(kHalfRoot, hn::Sub(sum, difference));

    x.v[0] = hn::Add(s0, d0);
    x.v[7] = hn::Sub(s0, d0);
    x.v[1] = hn::Add(s1, d1);
    x.v[6] = hn::Sub(s1, d1);
    x.v[2] = hn::Add(s2, d2);
    x.v[5] = hn::Sub(s2, d2);
    x.v[3] = hn::Add(s3, d3);
    x.v[4] = hn::Sub(s3, d3);
}

/// Loads eight vectors that lie `distance` floats apart.
HWY_INLINE Eight loadEight(const float* first, std::size_t distance) {
    Eight x;
    for (std::size_t k = 0; k < 8; ++k) {
        x.v[k] = hn::LoadU(LaneTag(), first + k * distance);
    }
    return x;
}

HWY_INLINE void storeEight(const Eight& x, float* first, std::size_t distance) {
    for (std::size_t k = 0; k < 8; ++k) {
        hn::StoreU(x.v[k], LaneTag(), first + k * distance);
    }
}

} // namespace
} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
