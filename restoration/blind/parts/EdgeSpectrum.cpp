#include "restoration/blind/parts/EdgeSpectrum.h"

#include "restoration/blind/parts/FrequencyCells.h"
#include "restoration/blind/parts/SquareSpectra.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace restoration {
namespace {

using frequencies::Cells;
using frequencies::kBands;
using frequencies::Spectrum;

constexpr int kLeastSide = 64;
constexpr double kFallOfEdges = 3.0;
/// Power above the noise counts as noise below this share of it.
constexpr double kLeastVisible = 0.2;
constexpr double kLeastShare = 0.3;
/// The least fall from the second band to the last one, in powers of e: 3 dB.
constexpr double kLeastFall = 0.69;

/// The edges in one direction.
struct DirectionFit {
    EdgeDirection edges;
    double leastShare = 0.0; ///< of edges over noise, in the middle bands
    double fall = 0.0;       ///< from the second band to the last one, in powers of e
};

/// The power of the noise in one direction, above 0.
double noiseOf(const Cells& cells, const Spectrum& least) {
    // Noise is as strong in all bands; the content of busy pictures, which have no square without
    // edges, is weakest in the last ones.
    double noise = cells[0].meanOf(least);
    for (const frequencies::Cell& cell : cells) {
        noise = std::min(noise, cell.meanOf(least));
    }
    // Rounded pictures are never quite free of noise.
    return noise + 1e-12;
}

DirectionFit fitOf(const Cells& cells, const Spectrum& most, const Spectrum& least) {
    const double noise = noiseOf(cells, least);
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
