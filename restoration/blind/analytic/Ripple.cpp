#include "restoration/blind/analytic/Ripple.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

namespace restoration {
namespace {

/// The first steps show the contents of the picture.
constexpr std::size_t kFirst = 2;
constexpr int kCeilings = 7;
constexpr double kMostNoise = 0.5;
constexpr double kTallest = 1.0;

double product(const std::vector<double>& a, const std::vector<double>& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

void subtract(double factor, const std::vector<double>& from, std::vector<double>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] -= factor * from[i];
    }
}

/// The largest of each value and those `reach` steps away.
std::vector<double> spread(const std::vector<double>& values, std::size_t reach) {
    std::vector<double> result = values;
    for (std::size_t i = 0; i + reach < values.size(); ++i) {
        result[i] = std::max(result[i], values[i + reach]);
        result[i + reach] = std::max(result[i + reach], values[i]);
    }
    return result;
}

} // namespace

void SpectralProfile::finish() {
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const double count = std::max(weights[i], 1.0);
        levels[i] /= count;
        powers[i] /= count;
    }
}

RippleFit::RippleFit(const SpectralProfile& profile, double floor) : m_floor(floor) {
    const std::size_t length = profile.levels.size();
    for (std::size_t i = 0; i < length; ++i) {
        m_roots.push_back(i < kFirst ? 0.0 : std::sqrt(profile.weights[i]));
    }
    for (int order = 0; order < 3; ++order) {
        std::vector<double> values(length);
        for (std::size_t i = 0; i < length; ++i) {
            const auto t = std::max(static_cast<double>(i), 0.5);
            values[i] = order == 0 ? 1.0 : order == 1 ? std::log(t) : t;
        }
        std::vector<double> rest = weightedRest(std::move(values));
        const double norm = std::sqrt(product(rest, rest));
        for (double& value : rest) {
            value = norm > 0.0 ? value / norm : 0.0;
        }
        m_smooth.push_back(std::move(rest));
    }
    m_rest = weightedRest(profile.levels);
    m_ceilings.push_back(spread(profile.powers, 1));
    for (int i = 1; i < kCeilings; ++i) {
        m_ceilings.push_back(spread(m_ceilings.back(), std::size_t{1} << (i - 1)));
    }
}

/// `values`, weighted by the roots of the weights, less what is smooth in them.
std::vector<double> RippleFit::weightedRest(std::vector<double> values) const {
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] *= m_roots[i];
    }
    for (const std::vector<double>& smooth : m_smooth) {
        subtract(product(smooth, values), smooth, values);
    }
    return values;
}

const std::vector<double>& RippleFit::ceilingFor(double period) const {
    std::size_t i = 0;
    while (i + 1 < m_ceilings.size() && static_cast<double>(std::size_t{1} << i) < 0.5 * period) {
        ++i;
    }
    return m_ceilings[i];
}

RippleMatch RippleFit::of(const BlurPattern& pattern) const {
    const std::vector<double>& ceiling = ceilingFor(pattern.period);
    std::vector<double> levels(m_rest.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        // The power that the sharp picture would have is the ceiling over the envelope.
        const double noise = std::min(m_floor / std::max(ceiling[i], m_floor), kMostNoise);
        levels[i] =
            std::log(pattern.powers[i] + (noise + BlurPattern::kLeak) * pattern.envelope[i]);
    }
    const std::vector<double> rest = weightedRest(std::move(levels));
    const double square = product(rest, rest);
    const double common = product(rest, m_rest);
    if (!(square > 0.0) || !(common > 0.0)) {
        return {};
    }
    const double height = common / square;
    const double used = std::min(height, kTallest);
    return {used * (2.0 * common - used * square), height};
}

} // namespace restoration
