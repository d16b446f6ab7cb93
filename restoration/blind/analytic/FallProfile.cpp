#include "restoration/blind/analytic/FallProfile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace restoration {
namespace {

/// The first rings show the contents of the picture.
constexpr std::size_t kFirst = 4;
constexpr double kTypicalSlope = -2.5;
constexpr double kSteepest = -4.0;
constexpr double kFlattest = -1.0;
constexpr int kSteps = 12;
constexpr double kTiny = 1e-12;

double limited(double step) {
    return std::clamp(step, -8.0, 8.0);
}

} // namespace

/// The sums of the normal equations of one step, and of the squared differences.
struct FallProfile::Moments {
    double square = 0.0;
    double mixed = 0.0;
    double second = 0.0;
    double first = 0.0;
    double other = 0.0;
    double error = 0.0;

    void add(double count, double toOffset, double toSlope, double rest) {
        square += count * toOffset * toOffset;
        mixed += count * toOffset * toSlope;
        second += count * toSlope * toSlope;
        first += count * toOffset * rest;
        other += count * toSlope * rest;
        error += count * rest * rest;
    }

    double determinant() const { return square * second - mixed * mixed; }
    /// The best change of the slope where the determinant is above 0.
    double slopeStep() const { return (square * other - mixed * first) / determinant(); }
    /// The best change of the offset after the slope has changed by `turn`.
    double offsetStep(double turn) const {
        return limited((first - turn * mixed) / std::max(square, kTiny));
    }
};

FallProfile::FallProfile(const SpectralProfile& profile, double floor, int side)
    : m_levels(profile.levels), m_weights(profile.weights), m_floor(floor) {
    // The mean logarithm of an exponential distribution is that of its mean less this.
    for (double& level : m_levels) {
        level += std::numbers::egamma;
    }
    for (std::size_t i = 0; i < m_levels.size(); ++i) {
        m_frequencies.push_back(std::max(static_cast<double>(i), 0.5) / side);
        m_logarithms.push_back(std::log(m_frequencies.back()));
    }
}

FallProfile::Moments FallProfile::momentsOf(const std::vector<double>& blur,
                                            const Line& line) const {
    Moments sum;
    for (std::size_t i = kFirst; i < m_levels.size(); ++i) {
        const double power =
            std::exp(std::clamp(line.offset + line.slope * m_logarithms[i], -60.0, 60.0)) * blur[i];
        const double share = power / (power + m_floor);
        const double rest = m_levels[i] - std::log(power + m_floor);
        sum.add(m_weights[i], share, share * m_logarithms[i], rest);
    }
    return sum;
}

FallFit FallProfile::of(const std::vector<double>& blur, std::optional<double> slope) const {
    Line line{0.0, slope.value_or(kTypicalSlope)};
    line.offset = m_levels[kFirst] - line.slope * m_logarithms[kFirst];
    Moments sum = momentsOf(blur, line);
    for (int step = 0; step < kSteps; ++step) {
        if (!slope && !(sum.determinant() > kTiny)) {
            break;
        }
        const double turn = slope ? 0.0 : std::clamp(sum.slopeStep(), -1.0, 1.0);
        const double next =
            slope ? line.slope : std::clamp(line.slope + turn, kSteepest, kFlattest);
        line.offset += sum.offsetStep(next - line.slope);
        line.slope = next;
        sum = momentsOf(blur, line);
    }
    return {line.slope, sum.error / static_cast<double>(m_levels.size() - kFirst)};
}

} // namespace restoration
