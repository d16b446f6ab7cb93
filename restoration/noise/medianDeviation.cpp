#include "restoration/noise/medianDeviation.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

/// The value that the absolute value of a standard normal variable stays below with the probability
/// `share`, 0..1 - 1e-14: the inverse of erf(z / sqrt(2)), by bisection.
double normalQuantile(double share) noexcept {
    double low = 0.0;
    double high = 8.0;
    for (int i = 0; i < 50; ++i) {
        const double middle = 0.5 * (low + high);
        (std::erf(middle / std::sqrt(2.0)) < share ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

} // namespace

double medianDeviation(std::span<const std::uint32_t> bins, std::size_t total) noexcept {
    const auto count = static_cast<double>(total);
    double below = 0.0;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const double upTo = below + bins[i];
        if (upTo > 0.0 && upTo >= 0.5 * count) {
            // Where all values lie below the end of the bin, their number limits what is known.
            const double endShare = std::min(upTo / count, 1.0 - 0.5 / count);
            const double start = i == 0 ? 0.0 : static_cast<double>(i) - 0.5;
            const double startQuantile = normalQuantile(below / count);
            const double endQuantile = normalQuantile(std::max(endShare, 0.5));
            const double medianQuantile = normalQuantile(0.5);
            const double width = static_cast<double>(i) + 0.5 - start;
            const double rise = endQuantile - startQuantile;
            const double part = rise > 0.0 ? (medianQuantile - startQuantile) / rise : 0.5;
            return (start + width * part) / medianQuantile;
        }
        below = upTo;
    }
    return 0.0;
}

} // namespace restoration
