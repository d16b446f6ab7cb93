#include "restoration/chroma/chooseChroma.h"

#include "restoration/chroma/ChromaRisk.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/strength/boundedStrength.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace restoration {
namespace {

constexpr std::size_t kPlanes = 2;

using Risks = std::array<ChromaRisk, kPlanes>;
using Variances = std::array<double, kPlanes>;

/// At least one pixel counts as known.
double shareOfKnown(const Tile& tile) noexcept {
    const auto side = static_cast<std::size_t>(tile.side);
    std::size_t known = 0;
    for (int y = 0; y < tile.side; ++y) {
        const std::uint8_t* row = tile.known.row(y);
        known += static_cast<std::size_t>(std::count(row, row + side, std::uint8_t{1}));
    }
    return static_cast<double>(std::max<std::size_t>(known, 1)) / static_cast<double>(side * side);
}

/// The risk of a chroma plane of a patch. Complete patches stay as they were loaded: tapered edges
/// would have less noise.
ChromaRisk riskOf(const Tile& tile, std::size_t chroma, const BlurSpectrum& blur,
                  TileScratch& scratch, const Cancellation& cancellation) {
    const Plane& source = tile.planes[chroma + 1];
    Plane plane(tile.side, tile.side);
    std::ranges::copy(source.values(), plane.values().begin());
    if (tile.isIncomplete) {
        estimateUnknown(plane, tile.known, blur, scratch, cancellation);
    }
    ChromaRisk risk;
    risk.add(plane, shareOfKnown(tile), blur, scratch, cancellation);
    return risk;
}

/// The risks of both planes over all patches, added in the order of the patches.
Risks risksOf(std::span<const Patch> patches, const BlurSpectrum& blur, Team& team) {
    std::vector<ChromaRisk> pieces(patches.size() * kPlanes);
    std::vector<std::unique_ptr<TileScratch>> scratches(static_cast<std::size_t>(team.threads()));
    team.forEach(pieces.size(), [&](std::size_t piece, int worker) {
        std::unique_ptr<TileScratch>& scratch = scratches[static_cast<std::size_t>(worker)];
        if (!scratch) {
            scratch = std::make_unique<TileScratch>(blur.side());
        }
        pieces[piece] = riskOf(patches[piece / kPlanes].tile, piece % kPlanes, blur, *scratch,
                               team.cancellation());
    });
    Risks risks;
    for (std::size_t piece = 0; piece < pieces.size(); ++piece) {
        risks[piece % kPlanes].add(pieces[piece]);
    }
    return risks;
}

double variance(float level) noexcept {
    const double deviation = static_cast<double>(level) / 255;
    return deviation * deviation;
}

/// An estimate that is too small does more harm than one that is too large, and compression hides
/// the noise of chroma: independent noise of the colours gives chroma nine tenths of the noise of
/// luminance or more.
Variances varianceOf(const NoiseLevels& noise) noexcept {
    const float least = 0.9f * noise.luminance;
    return {variance(std::max(noise.chromaBlue, least)),
            variance(std::max(noise.chromaRed, least))};
}

/// Strengths outside the bounds would make floats overflow.
double weightOf(float strength) noexcept {
    return 1 / static_cast<double>(boundedStrength(strength));
}

/// 2^-14 to 1.5 * 2^9, two to an octave.
double weightOfLeastRisk(const Risks& risks, const Variances& noise) noexcept {
    constexpr int kOctaves = 24;
    constexpr double kSmallest = 1.0 / 16384;
    constexpr double kUsual = 0.01; // for planes that are not finite
    double least = std::numeric_limits<double>::infinity();
    double chosen = kUsual;
    for (int i = 0; i < 2 * kOctaves; ++i) {
        const double weight = std::ldexp(i % 2 == 0 ? kSmallest : 1.5 * kSmallest, i / 2);
        const double risk = risks[0].risk(weight, noise[0]) + risks[1].risk(weight, noise[1]);
        if (risk < least) {
            least = risk;
            chosen = weight;
        }
    }
    return chosen;
}

} // namespace

ChromaPriors chooseChroma(std::span<const Patch> patches, const BlurSpectrum& blur,
                          const NoiseLevels& noise, float strength, Team& team) {
    const Risks risks = risksOf(patches, blur, team);
    const Variances variances = varianceOf(noise);
    const auto weight = static_cast<float>(strength > 0.0f ? weightOf(strength)
                                                           : weightOfLeastRisk(risks, variances));
    ChromaPriors priors;
    for (std::size_t i = 0; i < kPlanes; ++i) {
        const double left = risks[i].gradientNoise(static_cast<double>(weight), variances[i]);
        priors[i] = {weight, static_cast<float>(left)};
    }
    return priors;
}

} // namespace restoration
