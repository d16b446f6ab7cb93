#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// The polynomials of the piecewise lookups.
namespace vel {

/// c1 d + value with d = v - base, all in double.
struct LinePiece {
    double base;
    double value;
    double c1;

    double at(double v) const { return c1 * (v - base) + value; }
};

/// ((c3 d + c2) d + c1) d + value with d = v - base, all in double.
struct CubicPiece {
    double base;
    double value;
    double c1;
    double c2;
    double c3;

    double at(double v) const {
        const double d = v - base;
        return ((c3 * d + c2) * d + c1) * d + value;
    }
};

/// Quotient of two differences; 0 for two knots at the same place.
inline double slopeOver(double rise, double run) {
    return run != 0.0 ? rise / run : 0.0;
}

/// The chord of interval `k`: through knots k and k + 1.
inline LinePiece linePiece(const float* values, const float* levels, std::int32_t k) {
    const double base = levels[k];
    const double value = values[k];
    return {base, value, slopeOver(values[k + 1] - value, levels[k + 1] - base)};
}

/// The cubic of interval `k` of `n` levels, n at least 4: through the knots j .. j + 3 with
/// j = k - 1, moved inwards at both ends, and expanded around knot j + 1.
///
/// Method: divided differences. g0, g2 and g3 are the chord slopes from knot j + 1 to the three
/// others. The cubic is value + d q(d) with q the quadratic through these slopes.
inline CubicPiece cubicPiece(const float* values, const float* levels, std::int32_t n,
                             std::int32_t k) {
    const std::int32_t j = std::min(std::max(k - 1, 0), n - 4);
    const double base = levels[j + 1];
    const double value = values[j + 1];
    const double d0 = levels[j] - base;
    const double d2 = levels[j + 2] - base;
    const double d3 = levels[j + 3] - base;
    const double g0 = slopeOver(values[j] - value, d0);
    const double g2 = slopeOver(values[j + 2] - value, d2);
    const double g3 = slopeOver(values[j + 3] - value, d3);
    const double h2 = slopeOver(g2 - g0, d2 - d0);
    const double h3 = slopeOver(g3 - g0, d3 - d0);
    const double c3 = slopeOver(h3 - h2, d3 - d2);
    const double c2 = h2 - c3 * (d0 + d2);
    const double c1 = g0 - h2 * d0 + c3 * d0 * d2;
    return {base, value, c1, c2, c3};
}

/// The pieces of all intervals, one array for each coefficient for use by vector code. Entry 0 is
/// for pixels below the levels, entry k + 1 for interval k, entry n for pixels above; the outer two
/// hold zeros.
struct LookupTable {
    static constexpr std::int32_t kMaxLevels = 32;
    static constexpr std::size_t kEntries = kMaxLevels + 1;

    const float* levels; ///< rising, `count` of them
    std::int32_t count;
    double base[kEntries];
    double value[kEntries];
    double c1[kEntries];
    double c2[kEntries]; ///< of cubics only
    double c3[kEntries]; ///< of cubics only
};

} // namespace vel
