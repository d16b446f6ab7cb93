// Included once for each processor variant; see LaneFftPlan.h for the plan.

#if defined(VEL_PRIMITIVES_LANE_FFT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VEL_PRIMITIVES_LANE_FFT_INL_H
#undef VEL_PRIMITIVES_LANE_FFT_INL_H
#else
#define VEL_PRIMITIVES_LANE_FFT_INL_H
#endif

#include "velimproclib/primitives/LaneFftPlan.h"

#include <cstddef>
#include <hwy/highway.h>

// Sixteen complex transforms side by side. An element is 32 floats, one part (real or imaginary) of
// the 16 lanes and then the other; vectors run across lanes, so that no butterfly shuffles and a
// wider processor does the same arithmetic for each lane.
//
// The first pass moves from the data to the work array, through all of it. Each part that it leaves
// is then finished on its own, down to the last pass, while it is in the first-level cache. The
// last pass writes back to the data, every value at the place where its frequency belongs.
//
// The inverse transform is the forward one with real and imaginary parts exchanged, which costs
// nothing here: `Parts` says which comes first.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

inline constexpr std::ptrdiff_t kFftLanes = 16;
inline constexpr std::ptrdiff_t kElementFloats = 2 * kFftLanes;

using LaneTag = HWY_CAPPED(float, 16);
using LaneVec = hn::Vec<LaneTag>;
inline constexpr auto kVectorLanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(LaneTag()));
static_assert(kFftLanes % kVectorLanes == 0);

/// Offsets of the real and the imaginary parts inside an element.
struct Parts {
    std::ptrdiff_t re;
    std::ptrdiff_t im;
};
inline constexpr Parts kForwardParts{0, kFftLanes};
inline constexpr Parts kInverseParts{kFftLanes, 0};

struct Complex {
    LaneVec re, im;
};

HWY_INLINE Complex add(const Complex& a, const Complex& b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}
HWY_INLINE Complex sub(const Complex& a, const Complex& b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}
/// a - i b
HWY_INLINE Complex subTurned(const Complex& a, const Complex& b) {
    return {hn::Add(a.re, b.im), hn::Sub(a.im, b.re)};
}
/// a + i b
HWY_INLINE Complex addTurned(const Complex& a, const Complex& b) {
    return {hn::Sub(a.re, b.im), hn::Add(a.im, b.re)};
}
HWY_INLINE Complex scale(const Complex& a, LaneVec factor) {
    return {hn::Mul(a.re, factor), hn::Mul(a.im, factor)};
}
HWY_INLINE Complex mul(const Complex& a, LaneVec re, LaneVec im) {
    return {hn::Sub(hn::Mul(a.re, re), hn::Mul(a.im, im)),
            hn::Add(hn::Mul(a.re, im), hn::Mul(a.im, re))};
}

HWY_INLINE void butterfly2(Complex* x) {
    const Complex a = x[0];
    x[0] = add(a, x[1]);
    x[1] = sub(a, x[1]);
}

HWY_INLINE void butterfly4(Complex* x) {
    const Complex s02 = add(x[0], x[2]);
    const Complex d02 = sub(x[0], x[2]);
    const Complex s13 = add(x[1], x[3]);
    const Complex d13 = sub(x[1], x[3]);
    x[0] = add(s02, s13);
    x[1] = subTurned(d02, d13);
    x[2] = sub(s02, s13);
    x[3] = addTurned(d02, d13);
}

HWY_INLINE void butterfly8(Complex* x) {
    const LaneVec halfRoot = hn::Set(LaneTag(), 0.70710678118654752440f);
    Complex even[4] = {add(x[0], x[4]), add(x[1], x[5]), add(x[2], x[6]), add(x[3], x[7])};
    const Complex d04 = sub(x[0], x[4]);
    const Complex d15 = sub(x[1], x[5]);
    const Complex d26 = sub(x[2], x[6]);
    const Complex d37 = sub(x[3], x[7]);
    butterfly4(even);
    const Complex p = scale(sub(d15, d37), halfRoot);
    const Complex q = scale(add(d15, d37), halfRoot);
    const Complex a = subTurned(d04, d26);
    const Complex b = addTurned(d04, d26);
    const Complex u = subTurned(p, q);
    const Complex v = addTurned(p, q);
    x[0] = even[0];
    x[1] = add(a, u);
    x[2] = even[1];
    x[3] = sub(b, v);
    x[4] = even[2];
    x[5] = sub(a, u);
    x[6] = even[3];
    x[7] = add(b, v);
}

template <int kRadix>
HWY_INLINE void butterfly(Complex* x) {
    if constexpr (kRadix == 2) {
        butterfly2(x);
    } else if constexpr (kRadix == 4) {
        butterfly4(x);
    } else {
        butterfly8(x);
    }
}

/// One butterfly of 16 lanes: elements `fromStep` floats apart, results `toStep` floats apart,
/// multiplied by the twiddle factors unless there are none. `from` and `to` may be the same.
template <int kRadix, bool kTwiddled>
HWY_INLINE void turn(const float* from, std::ptrdiff_t fromStep, float* to, std::ptrdiff_t toStep,
                     const float* twiddles, Parts parts) {
    const LaneTag d;
    for (std::ptrdiff_t lane = 0; lane < kFftLanes; lane += kVectorLanes) {
        Complex x[kRadix];
        for (int k = 0; k < kRadix; ++k) {
            const float* element = from + k * fromStep + lane;
            x[k] = {hn::Load(d, element + parts.re), hn::Load(d, element + parts.im)};
        }
        butterfly<kRadix>(x);
        for (int k = 0; k < kRadix; ++k) {
            if constexpr (kTwiddled) {
                if (k > 0) {
                    const float* factor = twiddles + 2 * (k - 1);
                    x[k] = mul(x[k], hn::Set(d, factor[0]), hn::Set(d, factor[1]));
                }
            }
            float* element = to + k * toStep + lane;
            hn::Store(x[k].re, d, element + parts.re);
            hn::Store(x[k].im, d, element + parts.im);
        }
    }
}

/// A pass over kRadix * `parts` elements, results at the places of their operands.
template <int kRadix>
void passOf(const float* from, float* to, std::ptrdiff_t count, const float* twiddles,
            Parts parts) {
    const std::ptrdiff_t step = count * kElementFloats;
    turn<kRadix, false>(from, step, to, step, nullptr, parts);
    for (std::ptrdiff_t j = 1; j < count; ++j) {
        turn<kRadix, true>(from + j * kElementFloats, step, to + j * kElementFloats, step,
                           twiddles + (j - 1) * (kRadix - 1) * 2, parts);
    }
}

inline void pass(int radix, const float* from, float* to, std::ptrdiff_t count,
                 const float* twiddles, Parts parts) {
    if (radix == 8) {
        passOf<8>(from, to, count, twiddles, parts);
    } else {
        passOf<4>(from, to, count, twiddles, parts);
    }
}

/// The last pass: `count` butterflies over contiguous elements. Results of the first one go to
/// `to` and on in steps of `resultStep` floats, those of the next one start `toStep` floats
/// further.
template <int kRadix>
void lastPassOf(const float* from, float* to, std::ptrdiff_t count, std::ptrdiff_t toStep,
                std::ptrdiff_t resultStep, Parts parts) {
    for (std::ptrdiff_t j = 0; j < count; ++j) {
        turn<kRadix, false>(from + j * kRadix * kElementFloats, kElementFloats, to + j * toStep,
                            resultStep, nullptr, parts);
    }
}

inline void lastPass(int radix, const float* from, float* to, std::ptrdiff_t count,
                     std::ptrdiff_t toStep, std::ptrdiff_t resultStep, Parts parts) {
    if (radix == 8) {
        lastPassOf<8>(from, to, count, toStep, resultStep, parts);
    } else if (radix == 4) {
        lastPassOf<4>(from, to, count, toStep, resultStep, parts);
    } else {
        lastPassOf<2>(from, to, count, toStep, resultStep, parts);
    }
}

/// Finishes one part of `length` elements at `work`: the passes from `level` on. The frequencies of
/// the part stand `frequencyStep` floats apart in the data, from `data` on.
inline void finishPart(const LaneFftPlan& plan, std::size_t level, std::ptrdiff_t length,
                       float* work, float* data, std::ptrdiff_t frequencyStep, Parts parts) {
    const int radix = plan.radices[level];
    if (level + 1 == plan.radices.size()) {
        lastPass(radix, work, data, 1, 0, frequencyStep, parts);
        return;
    }
    const std::ptrdiff_t count = length / radix;
    pass(radix, work, work, count, plan.twiddles[level].data(), parts);
    if (level + 2 == plan.radices.size()) {
        lastPass(plan.radices[level + 1], work, data, radix, frequencyStep, frequencyStep * radix,
                 parts);
        return;
    }
    for (std::ptrdiff_t k = 0; k < radix; ++k) {
        finishPart(plan, level + 1, count, work + k * count * kElementFloats,
                   data + k * frequencyStep, frequencyStep * radix, parts);
    }
}

/// Transforms `plan.length` elements at `data` in place; `work` has room for as many. Both are
/// aligned to 64 bytes.
inline void transformLanes(const LaneFftPlan& plan, float* data, float* work, Parts parts) {
    const auto length = static_cast<std::ptrdiff_t>(plan.length);
    if (plan.radices.empty()) {
        return;
    }
    if (plan.radices.size() == 1) {
        lastPass(plan.radices[0], data, data, 1, 0, kElementFloats, parts);
        return;
    }
    const int radix = plan.radices[0];
    const std::ptrdiff_t count = length / radix;
    pass(radix, data, work, count, plan.twiddles[0].data(), parts);
    if (plan.radices.size() == 2) {
        lastPass(plan.radices[1], work, data, radix, kElementFloats, kElementFloats * radix, parts);
        return;
    }
    for (std::ptrdiff_t k = 0; k < radix; ++k) {
        finishPart(plan, 1, count, work + k * count * kElementFloats, data + k * kElementFloats,
                   kElementFloats * radix, parts);
    }
}

} // namespace
} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
