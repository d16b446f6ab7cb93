#include "restoration/blind/analytic/blurPatterns.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace restoration {
namespace {

constexpr double kPi = std::numbers::pi;

/// The Bessel function of the first kind and order 1 for x >= 0, to 1e-5. Below 8 its power series,
/// above Hankel's expansion.
double besselOne(double x) {
    if (x < 8.0) {
        double term = x / 2.0;
        double sum = term;
        for (int k = 1; k < 24; ++k) {
            term *= -x * x / (4.0 * k * (k + 1.0));
            sum += term;
        }
        return sum;
    }
    const double z = 8.0 * x;
    const double p = 1.0 + 7.5 / (z * z) - 590.625 / (z * z * z * z);
    const double q = 3.0 / z - 52.5 / (z * z * z);
    const double angle = x - 0.75 * kPi;
    return std::sqrt(2.0 / (kPi * x)) * (p * std::cos(angle) - q * std::sin(angle));
}

template <class Power, class Envelope>
BlurPattern pattern(std::size_t length, double period, const Power& power,
                    const Envelope& envelope) {
    BlurPattern result;
    for (std::size_t i = 0; i < length; ++i) {
        const auto step = std::max(static_cast<double>(i), 0.5);
        result.powers.push_back(power(step));
        result.envelope.push_back(envelope(step));
    }
    result.period = period;
    return result;
}

} // namespace

BlurPattern discPattern(double radius, std::size_t length, int side) {
    const double scale = 2.0 * kPi * radius / side;
    return pattern(
        length, side / (2.0 * radius),
        [&](double step) {
            const double x = scale * step;
            const double value = 2.0 * besselOne(x) / x;
            return value * value;
        },
        [&](double step) {
            const double x = scale * step;
            return 1.0 / (1.0 + kPi / 8.0 * x * x * x);
        });
}

BlurPattern strokePattern(double stroke, std::size_t length, int side) {
    const double scale = kPi * stroke / side;
    return pattern(
        length, side / stroke,
        [&](double step) {
            const double value = std::sin(scale * step) / (scale * step);
            return value * value;
        },
        [&](double step) { return 1.0 / (1.0 + 0.5 * scale * scale * step * step); });
}

} // namespace restoration
