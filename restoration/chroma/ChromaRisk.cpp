#include "restoration/chroma/ChromaRisk.h"

#include "restoration/deconvolution/tileTransforms.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace restoration {
namespace {

constexpr int kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;

// Bins of a float: its exponent and the leading three bits of its mantissa.
constexpr unsigned kBinShift = 20;
constexpr std::size_t kBins = std::size_t{1} << (31 - kBinShift);

std::size_t binOf(float quotient) noexcept {
    return (std::bit_cast<std::uint32_t>(quotient) & 0x7fffffffu) >> kBinShift;
}

/// The middle of a bin; infinite for the bins of infinity and NaN.
double middleOf(std::size_t bin) noexcept {
    const auto bits = (static_cast<std::uint32_t>(bin) << kBinShift) + (1u << (kBinShift - 1));
    const auto middle = static_cast<double>(std::bit_cast<float>(bits));
    return std::isfinite(middle) ? middle : std::numeric_limits<double>::infinity();
}

/// |D|^2 of the forward difference on a circle.
std::vector<double> differencePowers(int side) {
    std::vector<double> powers;
    for (int k = 0; k < side; ++k) {
        const double magnitude = 2 * std::sin(std::numbers::pi * std::min(k, side - k) / side);
        powers.push_back(magnitude * magnitude);
    }
    return powers;
}

double squared(float value) noexcept {
    return static_cast<double>(value) * static_cast<double>(value);
}

} // namespace

ChromaRisk::ChromaRisk() : m_byQuotient(kBins) {}

void ChromaRisk::add(const Plane& y, double knownShare, const BlurSpectrum& blur,
                     TileScratch& scratch, const Cancellation& cancellation) {
    const vel::RealFft2D& fft = blur.fft();
    float* spectrum = scratch.spectrum(fft, 0);
    forwardRows(fft, y, spectrum, scratch.rowMemory(fft), cancellation);
    forEachBlock(fft, cancellation, [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum + offset, block);
    });
    m_pixels = static_cast<double>(blur.side()) * static_cast<double>(blur.side());
    m_planes += 1;
    countSpectrum(spectrum, 1 / (m_pixels * knownShare), blur, cancellation);
}

/// `RealFft2D` defines the layout.
void ChromaRisk::countSpectrum(const float* spectrum, double energyFactor, const BlurSpectrum& blur,
                               const Cancellation& cancellation) {
    const std::vector<double> powers = differencePowers(blur.side());
    forEachBlock(blur.fft(), cancellation, [&](int block, std::size_t offset) {
        const double* horizontal = powers.data() + block * kLanes;
        for (int row = 0; row < blur.side(); ++row) {
            const std::size_t start = offset + static_cast<std::size_t>(row) * kRowFloats;
            const float* y = spectrum + start;
            const float* k = blur.spectrum() + start;
            const int frequency = blur.fft().frequencyOf(row);
            if (block == 0) {
                countFirstLane(y, k, frequency, powers, energyFactor);
            }
            for (int lane = block == 0 ? 1 : 0; lane < kLanes; ++lane) {
                const double vertical = powers[static_cast<std::size_t>(frequency)];
                countSlot(y + lane, k + lane, vertical + horizontal[lane], energyFactor);
            }
        }
    });
}

/// Column 0 up to the middle frequency, column side/2 above it; both in the two slots whose
/// frequencies are real.
void ChromaRisk::countFirstLane(const float* y, const float* k, int frequency,
                                const std::vector<double>& powers, double energyFactor) noexcept {
    const std::size_t middle = powers.size() / 2;
    const auto v = static_cast<std::size_t>(frequency);
    if (v % middle != 0) {
        countSlot(y, k, powers[v] + (v > middle ? powers[middle] : 0), energyFactor);
        return;
    }
    count(squared(k[0]), powers[v], energyFactor * squared(y[0]), 1);
    count(squared(k[kLanes]), powers[v] + powers[middle], energyFactor * squared(y[kLanes]), 1);
}

/// A complex slot stands for its frequency and the mirror image of it.
void ChromaRisk::countSlot(const float* y, const float* k, double differencePower,
                           double energyFactor) noexcept {
    count(squared(k[0]) + squared(k[kLanes]), differencePower,
          energyFactor * (squared(y[0]) + squared(y[kLanes])), 2);
}

/// @param energy       |Y|^2 of one of the frequencies, for each known pixel
/// @param frequencies  how many are alike
void ChromaRisk::count(double kernelPower, double differencePower, double energy,
                       double frequencies) noexcept {
    constexpr double kLargest = std::numeric_limits<float>::max();
    const double quotient = std::min(differencePower / kernelPower, kLargest);
    const double share = frequencies / m_pixels;
    Sum& sum = m_byQuotient[binOf(static_cast<float>(quotient))];
    sum.count += share;
    sum.energy += share * energy;
}

void ChromaRisk::add(const ChromaRisk& other) noexcept {
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        m_byQuotient[bin].count += other.m_byQuotient[bin].count;
        m_byQuotient[bin].energy += other.m_byQuotient[bin].energy;
    }
    m_planes += other.m_planes;
    m_pixels = std::max(m_pixels, other.m_pixels);
}

double ChromaRisk::risk(double weight, double noise) const noexcept {
    double sum = 0;
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        const double gain = 1 / (1 + weight * middleOf(bin));
        const Sum& here = m_byQuotient[bin];
        sum += (1 - gain) * (1 - gain) * here.energy + 2 * noise * gain * here.count;
    }
    return sum;
}

/// The restoration multiplies |D|^2 of the noise's spectrum by |K|^2 / (|K|^2 + weight |D|^2)^2.
double ChromaRisk::gradientNoise(double weight, double noise) const noexcept {
    double sum = 0;
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        const double quotient = middleOf(bin);
        if (std::isfinite(quotient)) {
            const double denominator = 1 + weight * quotient;
            sum += m_byQuotient[bin].count * quotient / (denominator * denominator);
        }
    }
    return noise * sum / std::max(m_planes, 1.0);
}

} // namespace restoration
