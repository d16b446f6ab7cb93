#include "restoration/strength/automaticStrength.h"

#include "restoration/kernels/largestSide.h"
#include "restoration/strength/chooseStrength.h"
#include "restoration/strength/strengthForNoise.h"
#include "restoration/strength/strengthPatches.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restoration {
namespace {

/// The planes to restore with the strength, and their noise.
std::vector<StrengthPlane> planesOf(const PictureReader& picture, PlaneLayout layout,
                                    std::span<const BlurSpectrum> blurs, const NoiseLevels& noise) {
    const auto planeOf = [&](std::size_t index, float deviation) {
        const BlurSpectrum& blur = blurs[blurs.size() > 1 ? index : 0];
        return StrengthPlane{index, &blur, {static_cast<double>(deviation), noise.isCompressed}};
    };
    if (layout == PlaneLayout::LuminanceChroma || picture.colours() == 1) {
        return {planeOf(0, noise.luminance)};
    }
    std::vector<StrengthPlane> planes;
    for (std::size_t i = 0; i < static_cast<std::size_t>(picture.colours()); ++i) {
        planes.push_back(planeOf(i, noise.channels[i]));
    }
    return planes;
}

/// The strongest strength that suits any of the planes and all kernels.
float strongestFor(std::span<const StrengthPlane> planes, float alpha,
                   std::span<const Kernel* const> kernels) noexcept {
    float strongest = 0.0f;
    for (const StrengthPlane& plane : planes) {
        strongest =
            std::max(strongest, strengthForNoise(static_cast<float>(plane.noise.deviation), alpha));
    }
    for (const Kernel* kernel : kernels) {
        strongest = std::min(strongest, kernel->trust.strongest);
    }
    return strongest;
}

} // namespace

float automaticStrength(const PictureReader& picture, const LoadRules& rules,
                        std::span<const Kernel* const> kernels, const NoiseLevels& noise,
                        float alpha, Team& team) {
    const StrengthPatches sample =
        strengthPatches(largestSide(kernels), picture.width(), picture.height());
    std::vector<Patch> patches;
    std::vector<BlurSpectrum> blurs;
    team.run([&] {
        patches = samplePatches(TileLoader(picture, sample.side, rules), sample.rules);
        for (const Kernel* kernel : kernels) {
            blurs.emplace_back(*kernel, sample.side);
        }
    });
    const std::vector<StrengthPlane> planes = planesOf(picture, rules.layout, blurs, noise);
    const float strongest = strongestFor(planes, alpha, kernels);
    return chooseStrength(patches, planes, {strongest, alpha}, team);
}

} // namespace restoration
