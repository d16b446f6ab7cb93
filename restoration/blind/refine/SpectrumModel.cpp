#include "restoration/blind/refine/SpectrumModel.h"

#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace restoration {
namespace {

/// Patches of the frequency plane along an axis. The level of a sharp picture's spectrum changes
/// little within one.
constexpr int kPatches = 32;
/// Cycles per pixel. Below, windows are too small to see frequencies apart.
constexpr double kLeastFrequency = 0.015;
constexpr double kLargestFrequency = 0.5;
/// The least level of a patch before levels are fitted, in units of the noise.
constexpr double kLeastLevel = 0.02;
constexpr int kLanes = vel::RealFft2D::kLanes;
constexpr int kRowFloats = vel::RealFft2D::kRowFloats;

} // namespace

SpectrumModel::SpectrumModel(const vel::RealFft2D& fft, double noise) : m_noise(noise) {
    markPatches(fft);
}

void SpectrumModel::markPatches(const vel::RealFft2D& fft) {
    const int side = fft.height();
    const std::array<std::size_t, 4> reals = vel::realSlots(fft);
    std::vector<int> numbers(static_cast<std::size_t>((kPatches + 1) * (kPatches + 1)), -1);
    const double patchSide = static_cast<double>(side) / kPatches;
    for (int block = 0; block < fft.blockCount(); ++block) {
        for (int slot = 0; slot < side * kLanes; ++slot) {
            const int row = slot / kLanes;
            const int lane = slot % kLanes;
            int u = block * kLanes + lane;
            int v = fft.frequencyOf(row);
            v -= v > side / 2 ? side : 0;
            if (u == 0 && v < 0) { // this slot holds a frequency of the last column
                u = side / 2;
            }
            const double f = std::hypot(u, v) / side;
            const auto place = static_cast<std::size_t>(row * kRowFloats + lane);
            const bool isReal = block == 0 && std::ranges::find(reals, place) != reals.end();
            Frequency frequency;
            frequency.prior = 1.0 / (f * f * f);
            if (u <= side / 2 && !isReal && f >= kLeastFrequency && f <= kLargestFrequency) {
                const int column = static_cast<int>(u / patchSide);
                const int line = static_cast<int>((v + side / 2) / patchSide);
                int& number = numbers[static_cast<std::size_t>(line * (kPatches + 1) + column)];
                if (number < 0) {
                    number = static_cast<int>(m_levels.size());
                    m_levels.push_back(0.0);
                }
                frequency.patch = number;
                m_count += 1.0;
            }
            m_frequencies.push_back(frequency);
        }
    }
}

void SpectrumModel::resetLevels() {
    std::vector<double> priors(m_levels.size());
    std::ranges::fill(m_levels, 0.0);
    for (const Frequency& at : m_frequencies) {
        if (at.patch >= 0) {
            const auto patch = static_cast<std::size_t>(at.patch);
            m_levels[patch] += std::max(at.power - m_noise, kLeastLevel * m_noise);
            priors[patch] += at.prior;
        }
    }
    for (std::size_t patch = 0; patch < m_levels.size(); ++patch) {
        m_levels[patch] /= priors[patch];
    }
}

/// Multiplicative updates for this distance of spectra (Fevotte, Bertin, Durrieu, Neural
/// Computation 21, 2009).
void SpectrumModel::fitLevels(int rounds, const Cancellation& cancellation) {
    constexpr double kMostChange = 10.0;
    std::vector<double> seen(m_levels.size());
    std::vector<double> expected(m_levels.size());
    for (int round = 0; round < rounds; ++round) {
        cancellation.check();
        std::ranges::fill(seen, 0.0);
        std::ranges::fill(expected, 0.0);
        for (const Frequency& at : m_frequencies) {
            if (at.patch >= 0) {
                const auto patch = static_cast<std::size_t>(at.patch);
                const double shape = at.blur * at.prior;
                const double model = m_levels[patch] * shape + m_noise;
                seen[patch] += at.power / model * (shape / model);
                expected[patch] += shape / model;
            }
        }
        for (std::size_t patch = 0; patch < m_levels.size(); ++patch) {
            m_levels[patch] *=
                std::clamp(seen[patch] / expected[patch], 1.0 / kMostChange, kMostChange);
        }
    }
}

} // namespace restoration
