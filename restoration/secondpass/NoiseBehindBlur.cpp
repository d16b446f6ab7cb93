#include "restoration/secondpass/NoiseBehindBlur.h"

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/tileTransforms.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace restoration {
namespace {

constexpr int kOrder = 7; // of the transform of a square

/// The fit ignores frequencies of which the blur leaves more of the power than this.
constexpr double kMostLeft = 0.01;

/// In cycles per pixel. Below the first there is more picture than its model explains.
constexpr double kLowest = 0.06;
constexpr double kBandLimit = 0.3;

/// Fewer do not separate noise from picture.
constexpr std::size_t kLeastCount = 100;

double frequency(int v, int u) {
    constexpr int n = NoiseBehindBlur::kSide;
    const int vertical = std::min(v, n - v);
    return std::sqrt(static_cast<double>(vertical * vertical + u * u)) / n;
}

/// f^2.5
double spectralFall(double f) {
    return f * f * std::sqrt(f);
}

std::size_t slotOf(const vel::RealFft2D& fft, int v, int u) {
    const auto column = static_cast<std::size_t>(u);
    constexpr std::size_t lanes = vel::RealFft2D::kLanes;
    return column / lanes * fft.blockFloats() + fft.rowOf(v) * vel::RealFft2D::kRowFloats +
           column % lanes;
}

double powerAt(const float* spectrum, std::size_t slot) {
    const auto re = static_cast<double>(spectrum[slot]);
    const auto im = static_cast<double>(spectrum[slot + vel::RealFft2D::kLanes]);
    return re * re + im * im;
}

/// The squares' window, half a turn of a raised cosine, spreads the power of a frequency over its
/// neighbours: 2/3 stay, 1/6 goes to either side.
double spread(int offset) {
    return offset == 0 ? 2.0 / 3.0 : 1.0 / 6.0;
}

} // namespace

NoiseBehindBlur::NoiseBehindBlur(const Kernel& kernel)
    : m_fft(kOrder, kOrder), m_square(kSide, kSide) {
    for (std::size_t i = 0; i < m_window.size(); ++i) {
        const double turn = 2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / kSide;
        // The mean square of a raised cosine is 3/8.
        m_window[i] = static_cast<float>((0.5 - 0.5 * std::cos(turn)) / std::sqrt(0.375 * kSide));
    }
    m_spectrum.resize(m_fft.spectrumFloats());
    m_rowMemory.resize(m_fft.scratchFloats());
    findFrequencies(kernel);
}

void NoiseBehindBlur::findFrequencies(const Kernel& kernel) {
    const BlurSpectrum blur(kernel, kSide);
    const auto signal = [&](int v, int u) {
        const int wrapped = (v + kSide) % kSide;
        return powerAt(blur.spectrum(), slotOf(m_fft, wrapped, u)) /
               spectralFall(frequency(wrapped, u));
    };
    // The first column shares its memory with the middle one; both and their neighbours stay out.
    for (int v = 0; v < kSide; ++v) {
        for (int u = 2; u < kSide / 2 - 1; ++u) {
            const double f = frequency(v, u);
            double spreadSignal = 0;
            for (int dv = -1; dv <= 1; ++dv) {
                for (int du = -1; du <= 1; ++du) {
                    spreadSignal += spread(dv) * spread(du) * signal(v + dv, u + du);
                }
            }
            if (f >= kLowest && spreadSignal * spectralFall(f) < kMostLeft) {
                m_bands[f < kBandLimit ? 0 : 1].push_back({slotOf(m_fft, v, u), spreadSignal, 0.0});
            }
        }
    }
}

void NoiseBehindBlur::add(const Plane& plane, int x, int y) {
    loadSquare(plane, x, y);
    const Cancellation never;
    forwardRows(m_fft, m_square, m_spectrum.data(), m_rowMemory.data(), never);
    for (int block = 0; block < m_fft.blockCount(); ++block) {
        m_fft.forwardColumns(
            m_spectrum.data() + static_cast<std::size_t>(block) * m_fft.blockFloats(), block);
    }
    for (Band& band : m_bands) {
        for (Frequency& f : band) {
            f.power += powerAt(m_spectrum.data(), f.slot);
        }
    }
    ++m_squares;
}

/// The windowed square without its mean.
void NoiseBehindBlur::loadSquare(const Plane& plane, int x, int y) {
    double sum = 0;
    double weights = 0;
    for (int r = 0; r < kSide; ++r) {
        const float* row = plane.row(y + r) + x;
        for (std::size_t c = 0; c < m_window.size(); ++c) {
            const auto weight = static_cast<double>(m_window[static_cast<std::size_t>(r)]) *
                                static_cast<double>(m_window[c]);
            sum += weight * static_cast<double>(row[c]);
            weights += weight;
        }
    }
    const auto mean = static_cast<float>(sum / weights);
    for (int r = 0; r < kSide; ++r) {
        const float* row = plane.row(y + r) + x;
        const float weight = m_window[static_cast<std::size_t>(r)];
        for (std::size_t c = 0; c < m_window.size(); ++c) {
            m_square.row(r)[c] = (row[c] - mean) * weight * m_window[c];
        }
    }
}

std::optional<float> NoiseBehindBlur::deviation() const {
    std::optional<float> greatest;
    for (const Band& band : m_bands) {
        if (const std::optional<double> found = variance(band)) {
            greatest = std::max(greatest.value_or(0.0f), static_cast<float>(std::sqrt(*found)));
        }
    }
    return greatest;
}

/// The constant of the fit. Its weights are those of a periodogram, whose deviation is its mean;
/// they are taken from the fit itself, in a few rounds.
std::optional<double> NoiseBehindBlur::variance(const Band& band) const {
    if (m_squares == 0 || band.size() < kLeastCount) {
        return std::nullopt;
    }
    double mean = 0;
    for (const Frequency& f : band) {
        mean += f.power / m_squares;
    }
    mean /= static_cast<double>(band.size());
    if (!(mean > 0) || !std::isfinite(mean)) {
        return std::nullopt;
    }
    constexpr int kRounds = 6;
    constexpr double kLeastShare = 0.01; // of the mean: keeps the weights finite
    double noise = mean;
    double slope = 0;
    for (int round = 0; round < kRounds; ++round) {
        double w = 0;
        double ws = 0;
        double wss = 0;
        double wp = 0;
        double wsp = 0;
        for (const Frequency& f : band) {
            const double expected = noise + slope * f.signal;
            const double weight = 1 / (expected * expected);
            const double power = f.power / m_squares;
            w += weight;
            ws += weight * f.signal;
            wss += weight * f.signal * f.signal;
            wp += weight * power;
            wsp += weight * f.signal * power;
        }
        const double determinant = w * wss - ws * ws;
        noise = (wp * wss - wsp * ws) / determinant;
        slope = (wsp * w - wp * ws) / determinant;
        if (!(slope > 0)) {
            noise = wp / w;
            slope = 0;
        }
        noise = std::max(kLeastShare * mean, noise);
    }
    return noise;
}

} // namespace restoration
