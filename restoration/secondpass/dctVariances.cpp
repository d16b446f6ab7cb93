#include "restoration/secondpass/dctVariances.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace restoration {
namespace {

constexpr int kSide = 8;
constexpr int kLags = 2 * kSide - 1; // -7..7

/// The sum over x of b(u, x) b(u, x + lag) for the basis vectors b of the orthonormal transform.
using BasisCorrelation = std::array<std::array<double, kLags>, kSide>;

double basis(int u, int x) {
    const double scale = u == 0 ? std::sqrt(1.0 / kSide) : std::sqrt(2.0 / kSide);
    return scale * std::cos((2 * x + 1) * u * std::numbers::pi / (2 * kSide));
}

BasisCorrelation correlateBasis() {
    BasisCorrelation correlation{};
    for (int u = 0; u < kSide; ++u) {
        for (int lag = 1 - kSide; lag < kSide; ++lag) {
            double sum = 0;
            for (int x = std::max(0, -lag); x < std::min(kSide, kSide - lag); ++x) {
                sum += basis(u, x) * basis(u, x + lag);
            }
            correlation[static_cast<std::size_t>(u)][static_cast<std::size_t>(lag + kSide - 1)] =
                sum;
        }
    }
    return correlation;
}

/// The covariances of lags -7..7 by -7..7.
using Lags = std::array<std::array<double, kLags>, kLags>;

Lags centralLags(const Plane& autocovariance) {
    Lags lags{};
    for (int y = 1 - kSide; y < kSide; ++y) {
        const float* row = autocovariance.row(y < 0 ? y + autocovariance.height() : y);
        for (int x = 1 - kSide; x < kSide; ++x) {
            lags[static_cast<std::size_t>(y + kSide - 1)][static_cast<std::size_t>(x + kSide - 1)] =
                static_cast<double>(row[x < 0 ? x + autocovariance.width() : x]);
        }
    }
    return lags;
}

} // namespace

DctVariances dctVariances(const Plane& autocovariance) {
    const BasisCorrelation correlation = correlateBasis();
    const Lags lags = centralLags(autocovariance);
    DctVariances variances{};
    for (std::size_t k = 0; k < variances.size(); ++k) {
        const auto& vertical = correlation[k / kSide];
        const auto& horizontal = correlation[k % kSide];
        double sum = 0;
        for (std::size_t y = 0; y < kLags; ++y) {
            double line = 0;
            for (std::size_t x = 0; x < kLags; ++x) {
                line += horizontal[x] * lags[y][x];
            }
            sum += vertical[y] * line;
        }
        variances[k] = static_cast<float>(sum);
    }
    return variances;
}

} // namespace restoration
