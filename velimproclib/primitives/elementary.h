#pragma once

#include <bit>
#include <cstdint>
#include <limits>

/// Logarithm and exponential for single-precision work, computed in double from sums and products
/// only. Unlike the system's library, whose routines differ with the processor and the platform,
/// they give the same bits everywhere; and being free of branches they vectorise in plain loops.
namespace vel {

/// Natural logarithm of a double that a float was widened to. Zero of either sign gives minus
/// infinity, a negative number NaN. The error is a few units in the last place of a double, so that
/// rounding the result to float is right but for about one input in 10^8.
///
/// With v = 2^k m and m next to 1, log v = k log 2 + 2 artanh(s) with s = (m - 1)/(m + 1); |s| is
/// below 0.172, and nine terms of the odd series leave less than 1e-15.
[[gnu::always_inline]] inline double naturalLog(double v) noexcept {
    constexpr std::uint64_t kOne = 0x3ff0000000000000;
    constexpr std::uint64_t kHalfRoot2 = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t kFraction = 0x000fffffffffffff;
    constexpr std::uint64_t kTwoTo52 = 0x4330000000000000;
    constexpr double kTwoTo52PlusBias = 4503599627370496.0 + 1023.0;
    constexpr double kLog2 = 0x1.62e42fefa39efp-1;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();

    const std::uint64_t shifted = std::bit_cast<std::uint64_t>(v) + (kOne - kHalfRoot2);
    const double exponent = std::bit_cast<double>((shifted >> 52) | kTwoTo52) - kTwoTo52PlusBias;
    const double m = std::bit_cast<double>((shifted & kFraction) + kHalfRoot2);
    const double s = (m - 1.0) / (m + 1.0);
    const double z = s * s;
    double sum = 1.0 / 17.0;
    sum = sum * z + 1.0 / 15.0;
    sum = sum * z + 1.0 / 13.0;
    sum = sum * z + 1.0 / 11.0;
    sum = sum * z + 1.0 / 9.0;
    sum = sum * z + 1.0 / 7.0;
    sum = sum * z + 1.0 / 5.0;
    sum = sum * z + 1.0 / 3.0;
    sum = sum * z + 1.0;
    const double finite = exponent * kLog2 + 2.0 * s * sum;

    const double notPositive = v == 0.0 ? -kInfinity : std::numeric_limits<double>::quiet_NaN();
    const double positive = v < kInfinity ? finite : kInfinity;
    return v > 0.0 ? positive : notPositive;
}

/// e^y for results that are rounded to float: exact to about 1e-14 of the value where that lies in
/// the range of floats; smaller and larger results, infinite `y` included, come out as doubles that
/// round to 0 and infinity. NaN gives NaN.
///
/// With n the integer nearest to y / log 2, e^y = 2^n e^r and |r| is at most 0.35; thirteen terms
/// of the power series leave less than 1e-15.
[[gnu::always_inline]] inline double exponential(double y) noexcept {
    constexpr double kLimit = 200.0;
    constexpr double kRoundingShift = 0x1.8p52; // adding it rounds to an integer in the low bits
    constexpr double kInverseLog2 = 0x1.71547652b82fep0;
    constexpr double kLog2High = 0x1.62e42feep-1; // with n below 2^10 the product is exact
    constexpr double kLog2Low = 0x1.a39ef35793c76p-33;
    constexpr std::uint64_t kOne = 0x3ff0000000000000;

    const double below = y > kLimit ? kLimit : y;
    const double limited = below < -kLimit ? -kLimit : below;
    const double rounded = limited * kInverseLog2 + kRoundingShift;
    const double n = rounded - kRoundingShift;
    const double r = (limited - n * kLog2High) - n * kLog2Low;
    double sum = 1.0 / 479001600.0;
    sum = sum * r + 1.0 / 39916800.0;
    sum = sum * r + 1.0 / 3628800.0;
    sum = sum * r + 1.0 / 362880.0;
    sum = sum * r + 1.0 / 40320.0;
    sum = sum * r + 1.0 / 5040.0;
    sum = sum * r + 1.0 / 720.0;
    sum = sum * r + 1.0 / 120.0;
    sum = sum * r + 1.0 / 24.0;
    sum = sum * r + 1.0 / 6.0;
    sum = sum * r + 0.5;
    sum = sum * r + 1.0;
    sum = sum * r + 1.0;
    const double scale =
        std::bit_cast<double>((std::bit_cast<std::uint64_t>(rounded) << 52) + kOne);
    return sum * scale;
}

} // namespace vel
