#include "velimproclib/primitives/arithmetic/Vectors.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/arithmetic/Vectors.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/arithmetic/elementary-inl.h"
#include "velimproclib/primitives/arithmetic/floatRows-inl.h"
#include "velimproclib/primitives/arithmetic/operations-inl.h"

// The loops carry `omp simd`: a target that is one of the sources is the same vector, therefore the
// elements are independent.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

float magnitude(float v) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(v) << 1 >> 1);
}

template <class Operation>
void combine(const float* a, const float* b, float* dst, std::size_t count) {
    const auto* left = unaligned(a);
    const auto* right = unaligned(b);
    auto* to = unaligned(dst);
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        to[i].value = Operation::of(left[i].value, right[i].value);
    }
}

/// Selects the rule for negative bases.
enum class Exponent { kOddInteger, kEvenInteger, kFraction };

/// `power` is |base|^x; gives base^x.
template <Exponent kExponent, class D>
HWY_INLINE hn::Vec<D> withSignOf(D d, hn::Vec<D> base, hn::Vec<D> power) {
    if constexpr (kExponent == Exponent::kOddInteger) {
        return hn::CopySign(power, base);
    } else if constexpr (kExponent == Exponent::kFraction) {
        const auto finite = hn::Gt(base, hn::Set(d, -std::numeric_limits<float>::infinity()));
        const auto nan = hn::Set(d, std::numeric_limits<float>::quiet_NaN());
        return hn::IfThenElse(hn::And(finite, hn::Lt(base, hn::Zero(d))), nan, power);
    } else {
        return power;
    }
}

template <Exponent kExponent>
void powerOf(const float* a, double x, float* y, std::size_t count) {
    const hn::ScalableTag<double> wide;
    const hn::Rebind<float, decltype(wide)> narrow;
    mapFloats(narrow, unaligned(a), unaligned(y), count, [=](auto base) HWY_ATTR {
        const auto log = naturalLog(wide, hn::PromoteTo(wide, hn::Abs(base)));
        const auto power = exponential(wide, hn::Mul(log, hn::Set(wide, x)));
        return withSignOf<kExponent>(narrow, base, roundedToFloats(narrow, power));
    });
}

} // namespace

void widen(const float* src, double* dst, std::size_t count) {
    const auto* from = unaligned(src);
    auto* to = unaligned(dst);
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        to[i].value = from[i].value;
    }
}

void narrow(const double* src, float* dst, std::size_t count) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    const auto* from = unaligned(src);
    auto* to = unaligned(dst);
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        const double v = from[i].value;
        const double below = v > kLargest ? kLargest : v;
        to[i].value = static_cast<float>(below < -kLargest ? -kLargest : below);
    }
}

void addF32(const float* a, const float* b, float* dst, std::size_t count) {
    combine<Sum>(a, b, dst, count);
}

void subtractF32(const float* a, const float* b, float* dst, std::size_t count) {
    combine<Difference>(a, b, dst, count);
}

void absF32(const float* src, float* dst, std::size_t count) {
    const auto* from = unaligned(src);
    auto* to = unaligned(dst);
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        to[i].value = magnitude(from[i].value);
    }
}

/// `x` is finite and not zero.
void power(const float* a, float x, float* y, std::size_t count) {
    if (std::trunc(x) != x) {
        powerOf<Exponent::kFraction>(a, x, y, count);
    } else if (std::fmod(x, 2.0f) != 0.0f) {
        powerOf<Exponent::kOddInteger>(a, x, y, count);
    } else {
        powerOf<Exponent::kEvenInteger>(a, x, y, count);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(widen);
HWY_EXPORT(narrow);
HWY_EXPORT(addF32);
HWY_EXPORT(subtractF32);
HWY_EXPORT(absF32);
HWY_EXPORT(power);

/// For exponents whose only results are 0, 1, infinity and NaN: every library gives the same.
void degeneratePower(const float* a, float x, float* y, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        unaligned(y)[i].value = std::pow(unaligned(a)[i].value, x);
    }
}

} // namespace

Status vecF32toF64(const float* src, double* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, dst}, {len}, {})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(widen)(src, dst, static_cast<std::size_t>(len));
    return kOk;
}

Status vecF64toF32(const double* src, float* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, dst}, {len}, {})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(narrow)(src, dst, static_cast<std::size_t>(len));
    return kOk;
}

Status vsAdd(std::int32_t n, const float* a, const float* b, float* y) noexcept {
    if (const Status status = checkArguments({a, b, y}, {n}, {})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(addF32)(a, b, y, static_cast<std::size_t>(n));
    return kOk;
}

Status vsSub(std::int32_t n, const float* a, const float* b, float* y) noexcept {
    if (const Status status = checkArguments({a, b, y}, {n}, {})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(subtractF32)(a, b, y, static_cast<std::size_t>(n));
    return kOk;
}

Status vsAbs(std::int32_t n, const float* a, float* y) noexcept {
    if (const Status status = checkArguments({a, y}, {n}, {})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(absF32)(a, y, static_cast<std::size_t>(n));
    return kOk;
}

Status vsPowx(std::int32_t n, const float* a, float x, float* y) noexcept {
    if (const Status status = checkArguments({a, y}, {n}, {})) {
        return status;
    }
    const auto count = static_cast<std::size_t>(n);
    if (x == 0.0f || !std::isfinite(x)) {
        degeneratePower(a, x, y, count);
    } else {
        HWY_DYNAMIC_DISPATCH(power)(a, x, y, count);
    }
    return kOk;
}

} // namespace vel
#endif
