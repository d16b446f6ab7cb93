#include "velimproclib/catalogue/fft/PackedSpectrum.h"

#include "velimproclib/catalogue/fft/FloatPlane.h"
#include "velimproclib/primitives/base/argumentChecks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/catalogue/fft/PackedSpectrum.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Rows of complex pairs are processed in pieces that are copied to small local arrays and back.
// Therefore the callers' rows may have any alignment, targets may be operands and no row needs
// special code for its end. Explicit vectors separate the real and the imaginary parts: for a loop
// with a sum and a difference in neighbouring elements, GCC 12 emits fused multiply-adds in spite
// of -ffp-contract=off.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::ptrdiff_t kPiece = 64; // pairs
constexpr std::ptrdiff_t kFloatBytes = sizeof(float);
constexpr std::ptrdiff_t kPairBytes = 2 * kFloatBytes;

void copyPairs(void* to, const void* from, std::ptrdiff_t count) {
    std::memcpy(to, from, static_cast<std::size_t>(count * kPairBytes));
}

using PartTag = hn::ScalableTag<float>;
using PartVec = hn::Vec<PartTag>;

constexpr auto kVectorPairs = static_cast<std::ptrdiff_t>(hn::MaxLanes(PartTag()));
static_assert(kPiece % kVectorPairs == 0);

struct Pair {
    PartVec re, im;
};

HWY_INLINE Pair loadPairs(const float* from) {
    Pair pair;
    hn::LoadInterleaved2(PartTag(), from, pair.re, pair.im);
    return pair;
}

/// dst = combine(a, b) for `count` pairs.
template <class Combine>
HWY_INLINE void combineRow(const char* a, const char* b, char* dst, std::ptrdiff_t count,
                           Combine combine) {
    HWY_ALIGN float left[2 * kPiece];
    HWY_ALIGN float right[2 * kPiece];
    HWY_ALIGN float result[2 * kPiece];
    // Elements beyond a short piece are computed and dropped. They are ones or values of the
    // previous piece, whose zeros divPairsRow has already counted.
    std::fill_n(left, 2 * kPiece, 1.0f);
    std::fill_n(right, 2 * kPiece, 1.0f);
    for (std::ptrdiff_t first = 0; first < count; first += kPiece) {
        const std::ptrdiff_t length = std::min(kPiece, count - first);
        copyPairs(left, a + first * kPairBytes, length);
        copyPairs(right, b + first * kPairBytes, length);
        for (std::ptrdiff_t i = 0; i < length; i += kVectorPairs) {
            const Pair pair = combine(loadPairs(left + 2 * i), loadPairs(right + 2 * i));
            hn::StoreInterleaved2(pair.re, pair.im, PartTag(), result + 2 * i);
        }
        copyPairs(dst + first * kPairBytes, result, length);
    }
}

} // namespace

void mulConjPairsRow(const char* a, const char* b, char* dst, std::ptrdiff_t pairs) {
    combineRow(a, b, dst, pairs, [](Pair x, Pair y) HWY_ATTR {
        return Pair{hn::Add(hn::Mul(x.re, y.re), hn::Mul(x.im, y.im)),
                    hn::Sub(hn::Mul(x.im, y.re), hn::Mul(x.re, y.im))};
    });
}

/// True when a divisor was zero.
bool divPairsRow(const char* a, const char* b, char* dst, std::ptrdiff_t pairs) {
    const PartTag d;
    const PartVec nan = hn::Set(d, std::numeric_limits<float>::quiet_NaN());
    PartVec smallest = hn::Set(d, 1.0f);
    combineRow(a, b, dst, pairs, [&](Pair x, Pair y) HWY_ATTR {
        const PartVec norm = hn::Add(hn::Mul(x.re, x.re), hn::Mul(x.im, x.im));
        const auto zero = hn::Eq(norm, hn::Zero(d));
        const PartVec re = hn::Div(hn::Add(hn::Mul(x.re, y.re), hn::Mul(x.im, y.im)), norm);
        const PartVec im = hn::Div(hn::Sub(hn::Mul(x.re, y.im), hn::Mul(x.im, y.re)), norm);
        smallest = hn::IfThenZeroElse(zero, smallest);
        return Pair{hn::IfThenElse(zero, nan, re), hn::IfThenElse(zero, nan, im)};
    });
    return !hn::AllTrue(d, hn::Eq(smallest, hn::Set(d, 1.0f)));
}

void addPairsRow(const char* a, const char* b, char* dst, std::ptrdiff_t pairs) {
    combineRow(a, b, dst, pairs, [](Pair x, Pair y) HWY_ATTR {
        return Pair{hn::Add(x.re, y.re), hn::Add(x.im, y.im)};
    });
}

void mulConstPairsRow(const char* src, float constRe, float constIm, char* dst,
                      std::ptrdiff_t pairs) {
    const PartVec re = hn::Set(PartTag(), constRe);
    const PartVec im = hn::Set(PartTag(), constIm);
    combineRow(src, src, dst, pairs, [&](Pair x, Pair) HWY_ATTR {
        return Pair{hn::Sub(hn::Mul(x.re, re), hn::Mul(x.im, im)),
                    hn::Add(hn::Mul(x.re, im), hn::Mul(x.im, re))};
    });
}

/// Magnitudes of `pairs` pairs, ascending from `dst` and descending from `mirrored`.
void magnitudePairsRow(const char* src, char* dst, char* mirrored, std::ptrdiff_t pairs) {
    const PartTag d;
    HWY_ALIGN float operand[2 * kPiece] = {};
    HWY_ALIGN float magnitude[kPiece];
    for (std::ptrdiff_t first = 0; first < pairs; first += kPiece) {
        const std::ptrdiff_t length = std::min(kPiece, pairs - first);
        copyPairs(operand, src + first * kPairBytes, length);
        for (std::ptrdiff_t i = 0; i < length; i += kVectorPairs) {
            const Pair x = loadPairs(operand + 2 * i);
            hn::Store(hn::Sqrt(hn::Add(hn::Mul(x.re, x.re), hn::Mul(x.im, x.im))), d,
                      magnitude + i);
        }
        std::memcpy(dst + first * kFloatBytes, magnitude,
                    static_cast<std::size_t>(length * kFloatBytes));
        std::reverse(magnitude, magnitude + length);
        std::memcpy(mirrored - (first + length - 1) * kFloatBytes, magnitude,
                    static_cast<std::size_t>(length * kFloatBytes));
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(mulConjPairsRow);
HWY_EXPORT(divPairsRow);
HWY_EXPORT(addPairsRow);
HWY_EXPORT(mulConstPairsRow);
HWY_EXPORT(magnitudePairsRow);

namespace {

/// The number of pairs along every row, for u = 1..rowPairs(w).
std::ptrdiff_t rowPairs(int w) {
    return (w - 1) / 2;
}

/// The columns packed downwards: column 0, and for an even width the last column.
template <class Visit>
void forEachRealColumn(int w, Visit visit) {
    visit(0, 0);
    if (w % 2 == 0) {
        visit(w - 1, w / 2);
    }
}

/// Visits a column packed downwards: `real(y, v)` for a real frequency v in row y, `pair(y, v)` for
/// a complex one in rows y and y + 1.
template <class Real, class Pair>
void walkRealColumn(int h, Real real, Pair pair) {
    real(0, 0);
    for (int v = 1; v <= (h - 1) / 2; ++v) {
        pair(2 * v - 1, v);
    }
    if (h % 2 == 0) {
        real(h - 1, h / 2);
    }
}

int mirroredRow(int v, int h) {
    return v == 0 ? 0 : h - v;
}

void putPair(const FloatPlane& plane, std::ptrdiff_t u, int v, float re, float im) {
    plane.put(2 * u, v, re);
    plane.put(2 * u + 1, v, im);
}

} // namespace

Status packToComplex(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const FloatPlane packed(src, srcStep);
    const FloatPlane complex(dst, dstStep);
    const std::ptrdiff_t pairs = rowPairs(w);
    for (int v = 0; v < h; ++v) {
        std::memcpy(complex.at(2, v), packed.at(1, v),
                    static_cast<std::size_t>(pairs) * 2 * sizeof(float));
        const int mirrored = mirroredRow(v, h);
        for (std::ptrdiff_t u = 1; u <= pairs; ++u) {
            putPair(complex, w - u, mirrored, packed.get(2 * u - 1, v), -packed.get(2 * u, v));
        }
    }
    forEachRealColumn(w, [&](int x, int u) {
        walkRealColumn(
            h, [&](int y, int v) { putPair(complex, u, v, packed.get(x, y), 0.0f); },
            [&](int y, int v) {
                const float re = packed.get(x, y);
                const float im = packed.get(x, y + 1);
                putPair(complex, u, v, re, im);
                putPair(complex, u, h - v, re, -im);
            });
    });
    return kOk;
}

Status complexToPack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const FloatPlane complex(src, srcStep);
    const FloatPlane packed(dst, dstStep);
    for (int v = 0; v < h; ++v) {
        std::memcpy(packed.at(1, v), complex.at(2, v),
                    static_cast<std::size_t>(rowPairs(w)) * 2 * sizeof(float));
    }
    forEachRealColumn(w, [&](std::ptrdiff_t x, std::ptrdiff_t u) {
        walkRealColumn(
            h, [&](int y, int v) { packed.put(x, y, complex.get(2 * u, v)); },
            [&](int y, int v) {
                packed.put(x, y, complex.get(2 * u, v));
                packed.put(x, y + 1, complex.get(2 * u + 1, v));
            });
    });
    return kOk;
}

Status mulPackConj(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                   float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    const FloatPlane left(a, aStep);
    const FloatPlane right(b, bStep);
    const FloatPlane result(dst, dstStep);
    for (int v = 0; v < h; ++v) {
        HWY_DYNAMIC_DISPATCH(mulConjPairsRow)
        (left.at(1, v), right.at(1, v), result.at(1, v), rowPairs(w));
    }
    forEachRealColumn(w, [&](int x, int) {
        walkRealColumn(
            h, [&](int y, int) { result.put(x, y, left.get(x, y) * right.get(x, y)); },
            [&](int y, int) {
                const float leftRe = left.get(x, y);
                const float leftIm = left.get(x, y + 1);
                const float rightRe = right.get(x, y);
                const float rightIm = right.get(x, y + 1);
                result.put(x, y, leftRe * rightRe + leftIm * rightIm);
                result.put(x, y + 1, leftIm * rightRe - leftRe * rightIm);
            });
    });
    return kOk;
}

Status magnitudePack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const FloatPlane packed(src, srcStep);
    const FloatPlane result(dst, dstStep);
    for (int v = 0; v < h; ++v) {
        HWY_DYNAMIC_DISPATCH(magnitudePairsRow)
        (packed.at(1, v), result.at(1, v), result.at(w - 1, mirroredRow(v, h)), rowPairs(w));
    }
    forEachRealColumn(w, [&](int x, int u) {
        walkRealColumn(
            h, [&](int y, int v) { result.put(u, v, std::fabs(packed.get(x, y))); },
            [&](int y, int v) {
                const float re = packed.get(x, y);
                const float im = packed.get(x, y + 1);
                const float magnitude = std::sqrt(re * re + im * im);
                result.put(u, v, magnitude);
                result.put(u, h - v, magnitude);
            });
    });
    return kOk;
}

Status divComplex(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    const FloatPlane divisor(a, aStep);
    const FloatPlane dividend(b, bStep);
    const FloatPlane result(dst, dstStep);
    bool zero = false;
    for (int y = 0; y < h; ++y) {
        zero |= HWY_DYNAMIC_DISPATCH(divPairsRow)(divisor.at(0, y), dividend.at(0, y),
                                                  result.at(0, y), w);
    }
    return zero ? kDivisionByZero : kOk;
}

Status addComplex(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    const FloatPlane left(a, aStep);
    const FloatPlane right(b, bStep);
    const FloatPlane result(dst, dstStep);
    for (int y = 0; y < h; ++y) {
        HWY_DYNAMIC_DISPATCH(addPairsRow)(left.at(0, y), right.at(0, y), result.at(0, y), w);
    }
    return kOk;
}

Status mulConstComplex(const float* src, std::int32_t srcStep, float constRe, float constIm,
                       float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const FloatPlane operand(src, srcStep);
    const FloatPlane result(dst, dstStep);
    for (int y = 0; y < h; ++y) {
        HWY_DYNAMIC_DISPATCH(mulConstPairsRow)
        (operand.at(0, y), constRe, constIm, result.at(0, y), w);
    }
    return kOk;
}

} // namespace vel
#endif
