// Logarithm and exponential for single-precision work, computed in double from sums, products and
// one quotient. They give the same bits everywhere; the routines of the system's library differ
// with the processor and the platform. Included once for each processor variant.
#if defined(VELORN_PRIMITIVES_ELEMENTARY_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_ELEMENTARY_INL_H
#undef VELORN_PRIMITIVES_ELEMENTARY_INL_H
#else
#define VELORN_PRIMITIVES_ELEMENTARY_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <hwy/highway.h>
#include <limits>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// The polynomial with `coefficients`, highest power first, by Horner's rule.
template <class D, std::size_t kCount>
HWY_INLINE hn::Vec<D> polynomial(D d, hn::Vec<D> x, const double (&coefficients)[kCount]) {
    hn::Vec<D> sum = hn::Set(d, coefficients[0]);
    for (std::size_t i = 1; i < kCount; ++i) {
        sum = hn::Add(hn::Mul(sum, x), hn::Set(d, coefficients[i]));
    }
    return sum;
}

/// Natural logarithm of doubles that were widened from floats. Zero of either sign gives minus
/// infinity; a negative number and NaN give NaN. The error is a few units in the last place of a
/// double; therefore rounding the result to float is correct except for about one input in 10^8.
///
/// Method: with v = 2^k m and m close to 1, log v = k log 2 + 2 artanh(s) and s = (m - 1)/(m + 1).
/// |s| is below 0.172, and the error of nine terms of the odd series is below 1e-15.
template <class D>
HWY_INLINE hn::Vec<D> naturalLog(D d, hn::Vec<D> v) {
    constexpr std::uint64_t kOne = 0x3ff0000000000000;
    constexpr std::uint64_t kHalfRoot2 = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t kFraction = 0x000fffffffffffff;
    constexpr std::uint64_t kTwoTo52 = 0x4330000000000000;
    constexpr double kTwoTo52PlusBias = 4503599627370496.0 + 1023.0;
    constexpr double kLog2 = 0x1.62e42fefa39efp-1;
    constexpr double kSeries[] = {1.0 / 17.0, 1.0 / 15.0, 1.0 / 13.0, 1.0 / 11.0, 1.0 / 9.0,
                                  1.0 / 7.0,  1.0 / 5.0,  1.0 / 3.0,  1.0};
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const hn::RebindToUnsigned<D> bits;
    const auto one = hn::Set(d, 1.0);

    const auto shifted = hn::Add(hn::BitCast(bits, v), hn::Set(bits, kOne - kHalfRoot2));
    const auto biased =
        hn::BitCast(d, hn::Or(hn::ShiftRight<52>(shifted), hn::Set(bits, kTwoTo52)));
    const auto exponent = hn::Sub(biased, hn::Set(d, kTwoTo52PlusBias));
    const auto m = hn::BitCast(
        d, hn::Add(hn::And(shifted, hn::Set(bits, kFraction)), hn::Set(bits, kHalfRoot2)));
    const auto s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
    const auto sum = polynomial(d, hn::Mul(s, s), kSeries);
    const auto finite = hn::Add(hn::Mul(exponent, hn::Set(d, kLog2)), hn::Mul(hn::Add(s, s), sum));

    const auto zero = hn::Zero(d);
    const auto infinity = hn::Set(d, kInfinity);
    const auto positive = hn::IfThenElse(hn::Lt(v, infinity), finite, infinity);
    const auto notPositive =
        hn::IfThenElse(hn::Eq(v, zero), hn::Set(d, -kInfinity), hn::Set(d, kNan));
    return hn::IfThenElse(hn::Gt(v, zero), positive, notPositive);
}

/// e^y for results that are rounded to float, with a relative error of about 1e-14 in the range of
/// floats. Smaller and larger results, also those of infinite `y`, are doubles that round to 0 and
/// infinity. NaN gives NaN.
///
/// Method: with n the integer nearest to y / log 2, e^y = 2^n e^r and |r| is at most 0.35. The
/// error of thirteen terms of the power series is below 1e-15.
template <class D>
HWY_INLINE hn::Vec<D> exponential(D d, hn::Vec<D> y) {
    constexpr double kLimit = 200.0;
    constexpr double kRoundingShift = 0x1.8p52; // a sum with it has an integer in its low bits
    constexpr double kInverseLog2 = 0x1.71547652b82fep0;
    constexpr double kLog2High = 0x1.62e42feep-1; // its product with n below 2^10 is exact
    constexpr double kLog2Low = 0x1.a39ef35793c76p-33;
    constexpr std::uint64_t kOne = 0x3ff0000000000000;
    constexpr double kSeries[] = {1.0 / 479001600.0,
                                  1.0 / 39916800.0,
                                  1.0 / 3628800.0,
                                  1.0 / 362880.0,
                                  1.0 / 40320.0,
                                  1.0 / 5040.0,
                                  1.0 / 720.0,
                                  1.0 / 120.0,
                                  1.0 / 24.0,
                                  1.0 / 6.0,
                                  0.5,
                                  1.0,
                                  1.0};
    const hn::RebindToUnsigned<D> bits;

    // Comparisons instead of Min and Max, whose result for NaN differs between processors.
    const auto highest = hn::Set(d, kLimit);
    const auto lowest = hn::Set(d, -kLimit);
    const auto below = hn::IfThenElse(hn::Gt(y, highest), highest, y);
    const auto limited = hn::IfThenElse(hn::Lt(below, lowest), lowest, below);
    const auto shift = hn::Set(d, kRoundingShift);
    const auto rounded = hn::Add(hn::Mul(limited, hn::Set(d, kInverseLog2)), shift);
    const auto n = hn::Sub(rounded, shift);
    const auto r = hn::Sub(hn::Sub(limited, hn::Mul(n, hn::Set(d, kLog2High))),
                           hn::Mul(n, hn::Set(d, kLog2Low)));
    const auto scale =
        hn::BitCast(d, hn::Add(hn::ShiftLeft<52>(hn::BitCast(bits, rounded)), hn::Set(bits, kOne)));
    return hn::Mul(polynomial(d, r, kSeries), scale);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
