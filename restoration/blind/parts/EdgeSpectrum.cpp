#include "restoration/blind/parts/EdgeSpectrum.h"

#include "restoration/blind/parts/FrequencyCells.h"
#include "restoration/blind/runs/SquareTransform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <numeric>
#include <utility>
#include <vector>

namespace restoration {
namespace {

using frequencies::Cells;
using frequencies::forEachFrequency;
using frequencies::kBands;
using frequencies::kColumns;
using frequencies::kDirections;
using frequencies::kSquare;
using frequencies::Spectrum;

constexpr int kStep = kSquare / 2;
constexpr int kLeastSide = 64;
constexpr frequencies::Band kMiddle{0.1, 0.25};
constexpr double kFallOfEdges = 3.0;
/// Power above the noise counts as noise below this share of it.
constexpr double kLeastVisible = 0.2;
constexpr double kLeastShare = 0.3;
/// The least fall from the second band to the last one, in powers of e: 3 dB.
constexpr double kLeastFall = 0.69;

/// The periodograms of overlapping squares.
class SquareSpectra {
public:
    SquareSpectra(const Plane& picture, const Cancellation& cancellation)
        : m_transform(kSquare, cancellation), m_square(kSquare, kSquare) {
        m_memory.resize(m_transform.fft().spectrumFloats());
        for (int i = 0; i < kSquare; ++i) {
            const double turn = 2.0 * std::numbers::pi * (i + 1) / (kSquare + 1);
            m_window[static_cast<std::size_t>(i)] = static_cast<float>(0.5 - 0.5 * std::cos(turn));
        }
        for (int y = 0; y + kSquare <= picture.height(); y += kStep) {
            for (int x = 0; x + kSquare <= picture.width(); x += kStep) {
                add(picture, x, y);
            }
        }
        sortByMiddle();
    }

    /// The mean of the quarter with the most power at middle frequencies, or the least.
    Spectrum most() const { return mean(m_order.size() - quarter()); }
    Spectrum least() const { return mean(0); }

private:
    std::size_t quarter() const { return m_order.size() / 4; }

    void add(const Plane& picture, int left, int top) {
        double sum = 0.0;
        for (int y = 0; y < kSquare; ++y) {
            const float* row = picture.row(top + y) + left;
            for (int x = 0; x < kSquare; ++x) {
                sum += static_cast<double>(row[x]);
            }
        }
        const auto average = static_cast<float>(sum / (kSquare * kSquare));
        for (int y = 0; y < kSquare; ++y) {
            const float* row = picture.row(top + y) + left;
            for (int x = 0; x < kSquare; ++x) {
                m_square.row(y)[x] = (row[x] - average) * m_window[static_cast<std::size_t>(y)] *
                                     m_window[static_cast<std::size_t>(x)];
            }
        }
        m_transform.forward(m_square, m_memory.data());
        const vel::RealFft2D& fft = m_transform.fft();
        Spectrum& powers = m_spectra.emplace_back();
        forEachFrequency([&](std::size_t slot, double, double) {
            constexpr std::size_t lanes = vel::RealFft2D::kLanes;
            const std::size_t column = slot % kColumns;
            const float* value =
                m_memory.data() + column / lanes * fft.blockFloats() +
                fft.rowOf(static_cast<int>(slot / kColumns)) * vel::RealFft2D::kRowFloats +
                column % lanes;
            const auto re = static_cast<double>(value[0]);
            const auto im = static_cast<double>(value[lanes]);
            powers[slot] = re * re + im * im;
        });
    }

    void sortByMiddle() {
        std::vector<std::size_t> slots;
        forEachFrequency([&](std::size_t slot, double frequency, double) {
            if (kMiddle.holds(frequency)) {
                slots.push_back(slot);
            }
        });
        std::vector<double> powers;
        for (const Spectrum& spectrum : m_spectra) {
            double sum = 0.0;
            for (const std::size_t slot : slots) {
                sum += spectrum[slot];
            }
            powers.push_back(sum);
        }
        m_order.resize(m_spectra.size());
        std::iota(m_order.begin(), m_order.end(), std::size_t{0});
        std::ranges::sort(m_order, {},
                          [&](std::size_t square) { return std::pair(powers[square], square); });
    }

    Spectrum mean(std::size_t first) const {
        Spectrum sum{};
        for (std::size_t i = first; i < first + quarter(); ++i) {
            const Spectrum& spectrum = m_spectra[m_order[i]];
            std::transform(sum.begin(), sum.end(), spectrum.begin(), sum.begin(), std::plus<>());
        }
        return sum;
    }

    SquareTransform m_transform;
    Plane m_square;
    vel::AlignedFloats m_memory;
    std::array<float, kSquare> m_window{};
    std::vector<Spectrum> m_spectra;
    std::vector<std::size_t> m_order;
};

/// The edges in one direction.
struct DirectionFit {
    EdgeDirection edges;
    double leastShare = 0.0; ///< of edges over noise, in the middle bands
    double fall = 0.0;       ///< from the second band to the last one, in powers of e
};

DirectionFit fitOf(const Cells& cells, const Spectrum& most, const Spectrum& least) {
    // Noise is as strong in all bands; the content of busy pictures, which have no square without
    // edges, is weakest in the last ones.
    double noise = cells[0].meanOf(least);
    for (const frequencies::Cell& cell : cells) {
        noise = std::min(noise, cell.meanOf(least));
    }
    // Rounded pictures are never quite free of noise.
    noise += 1e-12;
    std::array<double, kBands.size()> shares{};
    std::array<double, kBands.size()> edges{};
    for (std::size_t band = 0; band < kBands.size(); ++band) {
        const double above = cells[band].meanOf(most) - noise;
        shares[band] = above / noise;
        edges[band] = std::max(above, kLeastVisible * noise);
    }
    DirectionFit fit;
    double product = 0.0;
    double square = 0.0;
    const double first = cells[0].frequency;
    for (std::size_t band = 1; band < kBands.size(); ++band) {
        // A Gaussian of variance s leaves exp(-4 pi^2 s f^2) of the power.
        const double frequency = cells[band].frequency;
        const double lost =
            -std::log(edges[band] / edges[0]) - kFallOfEdges * std::log(frequency / first);
        const double lostPerVariance =
            4.0 * std::numbers::pi * std::numbers::pi * (frequency * frequency - first * first);
        product += lost * lostPerVariance;
        square += lostPerVariance * lostPerVariance;
        fit.edges.lost[band - 1] = lost;
        fit.edges.isVisible[band - 1] = shares[band] > kLeastVisible;
    }
    fit.edges.variance = product / square;
    fit.leastShare = std::min({shares[1], shares[2], shares[3]});
    fit.fall = std::log(edges[1] / edges.back());
    return fit;
}

} // namespace

EdgeSpectrum edgeSpectrum(const Plane& luminance, const Cancellation& cancellation) {
    if (std::min(luminance.width(), luminance.height()) < kLeastSide) {
        return {};
    }
    const SquareSpectra spectra(luminance, cancellation);
    const Spectrum most = spectra.most();
    const Spectrum least = spectra.least();
    EdgeSpectrum result{-1e9, true, {}};
    double fall = 0.0;
    const auto cells = frequencies::cellsOfDirections();
    for (std::size_t direction = 0; direction < kDirections; ++direction) {
        const DirectionFit fit = fitOf(cells[direction], most, least);
        result.directions[direction] = fit.edges;
        result.blurVariance = std::max(result.blurVariance, fit.edges.variance);
        result.showsEdges = result.showsEdges && fit.leastShare > kLeastShare;
        fall += fit.fall;
    }
    result.showsEdges = result.showsEdges && fall > kLeastFall * static_cast<double>(kDirections);
    return result;
}

} // namespace restoration
