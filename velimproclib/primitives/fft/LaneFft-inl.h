// Included once for each processor variant. LaneFftPlan.h describes the plan.

#if defined(VELORN_PRIMITIVES_LANE_FFT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_LANE_FFT_INL_H
#undef VELORN_PRIMITIVES_LANE_FFT_INL_H
#else
#define VELORN_PRIMITIVES_LANE_FFT_INL_H
#endif

#include "velimproclib/primitives/fft/LaneFftPlan.h"

#include <cstddef>
#include <hwy/highway.h>

// Sixteen complex transforms side by side, in place. An element is 32 floats: the real (or
// imaginary) parts of the 16 lanes, then the other parts. Vectors run across lanes. Therefore no
// butterfly shuffles, and a wider processor does the same arithmetic for each lane.
//
// Every pass overwrites its operands with its results. Frequency k ends up in element
// plan.places[k], and the inverse starts from there: nothing is ever sorted. A transform of 256
// elements stays inside the first-level cache. A longer one runs its first pass over all elements
// and then finishes each part of the result on its own, down to the last pass.
//
// The inverse transform is the forward one with real and imaginary parts exchanged: `Parts` holds
// their order, at no cost.

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

/// The values of a butterfly that the twiddle factors multiply.
enum class Twiddle { kNone, kOperands, kResults };

HWY_INLINE Complex twiddled(const Complex& x, const float* factor) {
    return mul(x, hn::Set(LaneTag(), factor[0]), hn::Set(LaneTag(), factor[1]));
}

/// One butterfly of 16 lanes, in place, over elements `step` floats apart.
template <int kRadix, Twiddle kTwiddle>
HWY_INLINE void turn(float* data, std::ptrdiff_t step, const float* twiddles, Parts parts) {
    const LaneTag d;
    for (std::ptrdiff_t lane = 0; lane < kFftLanes; lane += kVectorLanes) {
        Complex x[kRadix];
        for (int k = 0; k < kRadix; ++k) {
            const float* element = data + k * step + lane;
            x[k] = {hn::Load(d, element + parts.re), hn::Load(d, element + parts.im)};
            if (kTwiddle == Twiddle::kOperands && k > 0) {
                x[k] = twiddled(x[k], twiddles + 2 * (k - 1));
            }
        }
        butterfly<kRadix>(x);
        for (int k = 0; k < kRadix; ++k) {
            if (kTwiddle == Twiddle::kResults && k > 0) {
                x[k] = twiddled(x[k], twiddles + 2 * (k - 1));
            }
            float* element = data + k * step + lane;
            hn::Store(x[k].re, d, element + parts.re);
            hn::Store(x[k].im, d, element + parts.im);
        }
    }
}

/// The butterflies `first` to `end` - 1 of a pass over kRadix * `count` elements.
template <int kRadix, Twiddle kTwiddle>
void passOf(float* data, std::ptrdiff_t count, std::ptrdiff_t first, std::ptrdiff_t end,
            const float* twiddles, Parts parts) {
    const std::ptrdiff_t step = count * kElementFloats;
    std::ptrdiff_t j = first;
    if (j == 0) {
        turn<kRadix, Twiddle::kNone>(data, step, nullptr, parts);
        ++j;
    }
    for (; j < end; ++j) {
        turn<kRadix, kTwiddle>(data + j * kElementFloats, step,
                               twiddles + (j - 1) * (kRadix - 1) * 2, parts);
    }
}

template <Twiddle kTwiddle>
void pass(const LaneFftPlan& plan, std::size_t level, float* data, std::ptrdiff_t count,
          std::ptrdiff_t first, std::ptrdiff_t end, Parts parts) {
    const float* twiddles = plan.twiddles[level].data();
    if (plan.radices[level] == 8) {
        passOf<8, kTwiddle>(data, count, first, end, twiddles, parts);
    } else {
        passOf<4, kTwiddle>(data, count, first, end, twiddles, parts);
    }
}

template <int kRadix>
void leavesOf(float* data, std::ptrdiff_t count, Parts parts) {
    for (std::ptrdiff_t j = 0; j < count; ++j) {
        turn<kRadix, Twiddle::kNone>(data + j * kRadix * kElementFloats, kElementFloats, nullptr,
                                     parts);
    }
}

/// The pass over neighbouring elements, which has no twiddle factors: `count` butterflies.
inline void leaves(int radix, float* data, std::ptrdiff_t count, Parts parts) {
    if (radix == 8) {
        leavesOf<8>(data, count, parts);
    } else if (radix == 4) {
        leavesOf<4>(data, count, parts);
    } else {
        leavesOf<2>(data, count, parts);
    }
}

/// From the order of samples to the order of `places`: runs the passes from `level` on, over the
/// part of `length` elements at `data`.
inline void decimate(const LaneFftPlan& plan, std::size_t level, std::ptrdiff_t length, float* data,
                     Parts parts) {
    if (level == plan.radices.size()) {
        return;
    }
    const int radix = plan.radices[level];
    const std::ptrdiff_t count = length / radix;
    if (count == 1) {
        leaves(radix, data, 1, parts);
        return;
    }
    pass<Twiddle::kResults>(plan, level, data, count, 0, count, parts);
    if (level + 2 == plan.radices.size()) {
        leaves(plan.radices[level + 1], data, radix, parts);
        return;
    }
    for (std::ptrdiff_t k = 0; k < radix; ++k) {
        decimate(plan, level + 1, count, data + k * count * kElementFloats, parts);
    }
}

/// The inverse: from the order of `places` to the order of samples. With exchanged parts the result
/// is the inverse transform times the length.
inline void assemble(const LaneFftPlan& plan, std::size_t level, std::ptrdiff_t length, float* data,
                     Parts parts) {
    if (level == plan.radices.size()) {
        return;
    }
    const int radix = plan.radices[level];
    const std::ptrdiff_t count = length / radix;
    if (count == 1) {
        leaves(radix, data, 1, parts);
        return;
    }
    if (level + 2 == plan.radices.size()) {
        leaves(plan.radices[level + 1], data, radix, parts);
    } else {
        for (std::ptrdiff_t k = 0; k < radix; ++k) {
            assemble(plan, level + 1, count, data + k * count * kElementFloats, parts);
        }
    }
    pass<Twiddle::kOperands>(plan, level, data, count, 0, count, parts);
}

} // namespace
} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
