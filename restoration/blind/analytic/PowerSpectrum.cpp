#include "restoration/blind/analytic/PowerSpectrum.h"

#include "restoration/blind/spectra/hannWindow.h"
#include "restoration/blind/spectra/SquareTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace restoration {
namespace {

/// Frequencies above the first are noise, if any are; frequencies above the second are not used.
constexpr double kNoiseFrequency = 0.47;
constexpr double kLargestFrequency = 0.45;
/// The power of frequencies in use, in units of that of the noise.
constexpr double kLeastShare = 1.6;
/// Keeps logarithms finite; far below the noise of rounding.
constexpr double kLeastPower = 1e-9;

/// The centre of `picture` in levels of 255, less its mean, under a window of unit power.
Plane windowed(const Plane& picture, int side) {
    const int width = std::min(picture.width(), side);
    const int height = std::min(picture.height(), side);
    const int left = (picture.width() - width) / 2;
    const int top = (picture.height() - height) / 2;
    const std::vector<double> across = hannWindow(width);
    const std::vector<double> down = hannWindow(height);
    double sum = 0.0;
    double weight = 0.0;
    double power = 0.0;
    const auto visit = [&](const auto& work) {
        for (int y = 0; y < height; ++y) {
            const float* row = picture.row(top + y) + left;
            for (int x = 0; x < width; ++x) {
                work(x, y, static_cast<double>(row[x]),
                     across[static_cast<std::size_t>(x)] * down[static_cast<std::size_t>(y)]);
            }
        }
    };
    visit([&](int, int, double value, double share) {
        sum += share * value;
        weight += share;
        power += share * share;
    });
    Plane result(side, side);
    std::ranges::fill(result.values(), 0.0f);
    const double scale = 255.0 / std::sqrt(power);
    visit([&](int x, int y, double value, double share) {
        result.row(y)[x] = static_cast<float>(scale * share * (value - sum / weight));
    });
    return result;
}

} // namespace

PowerSpectrum::PowerSpectrum(const Plane& picture, const Cancellation& cancellation)
    : m_side(std::clamp(powerOfTwoFrom(std::max(picture.width(), picture.height())), 64,
                        kLargestSide)) {
    transform(picture, cancellation);
    measureNoise();
    findReach();
}

int PowerSpectrum::ringOf(int v, int u) noexcept {
    return static_cast<int>(std::sqrt(static_cast<double>(u * u + v * v)) + 0.5);
}

int PowerSpectrum::largestReach() const noexcept {
    return static_cast<int>(kLargestFrequency * m_side);
}

void PowerSpectrum::transform(const Plane& picture, const Cancellation& cancellation) {
    SquareTransform transform(m_side, cancellation);
    vel::AlignedFloats spectrum;
    spectrum.resize(transform.fft().spectrumFloats());
    transform.forward(windowed(picture, m_side), spectrum.data());
    const int half = m_side / 2;
    m_powers.resize(static_cast<std::size_t>(m_side) * static_cast<std::size_t>(half));
    m_levels.resize(m_powers.size());
    for (int v = -half + 1; v < half; ++v) {
        for (int u = kFirst; u < half; ++u) {
            m_powers[index(v, u)] = transform.powerAt((v + m_side) % m_side, u, spectrum.data());
            m_levels[index(v, u)] = std::log(m_powers[index(v, u)] + kLeastPower);
        }
    }
}

void PowerSpectrum::measureNoise() {
    std::vector<double> highest;
    const double bound = kNoiseFrequency * m_side;
    for (int v = -m_side / 2 + 1; v < m_side / 2; ++v) {
        for (int u = kFirst; u < m_side / 2; ++u) {
            if (u * u + v * v > bound * bound) {
                highest.push_back(power(v, u));
            }
        }
    }
    const auto middle = highest.begin() + static_cast<std::ptrdiff_t>(highest.size() / 2);
    std::nth_element(highest.begin(), middle, highest.end());
    // Of an exponential distribution.
    m_floor = *middle / std::numbers::ln2 + kLeastPower;
}

void PowerSpectrum::findReach() {
    const int most = largestReach();
    std::vector<double> sums(static_cast<std::size_t>(most) + 2);
    std::vector<double> counts(sums.size());
    forEach(most + 1, [&](int v, int u) {
        const auto ring = static_cast<std::size_t>(ringOf(v, u));
        sums[ring] += power(v, u);
        counts[ring] += 1.0;
    });
    const auto share = [&](int ring) {
        const auto i = static_cast<std::size_t>(ring);
        return (sums[i - 1] + sums[i] + sums[i + 1]) /
               ((counts[i - 1] + counts[i] + counts[i + 1]) * m_floor);
    };
    const int least = m_side / 20;
    m_reach = most;
    while (m_reach > least && share(m_reach) < kLeastShare) {
        --m_reach;
    }
}

} // namespace restoration
