#include "restoration/pipeline/chooseSettings.h"

#include "restoration/chroma/chooseChroma.h"
#include "restoration/pipeline/planGrid.h"
#include "restoration/strength/automaticStrength.h"
#include "restoration/strength/boundedStrength.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace restoration {
namespace {

float givenOr(float given, float automatic) noexcept {
    return given >= 0.0f ? given : automatic;
}

/// The choice for the chroma planes, from patches of the picture.
ChromaPriors chromaPriors(const PictureReader& picture, const LoadRules& rules,
                          const Kernel& kernel, const NoiseLevels& noise, float strength,
                          Team& team) {
    constexpr int kSide = 256;
    constexpr int kPatches = 16;
    PatchPlan plan = planPatches(kernel.largerSide(), kSide, kPatches);
    plan.rules.largestCount = std::max(2, kPatches * kSide / plan.side); // large ones take memory
    std::vector<Patch> patches;
    std::optional<BlurSpectrum> blur;
    team.run([&] {
        patches = samplePatches(TileLoader(picture, plan.side, rules), plan.rules);
        blur.emplace(kernel, plan.side);
    });
    return chooseChroma(patches, *blur, noise, strength, team);
}

} // namespace

Choices chooseSettings(const PictureReader& picture, const LoadRules& rules,
                       std::span<const Kernel* const> kernels, const NoiseLevels& noise,
                       const VelornRestoreSettings& settings, Team& team) {
    constexpr float kAlpha = 0.8f;
    constexpr float kLimit = 0.0f;
    Choices choices;
    choices.noise = noise;
    choices.alpha = givenOr(settings.alpha, kAlpha);
    choices.limit = givenOr(settings.limit, kLimit);
    choices.strength = boundedStrength(settings.strength);
    if (settings.strength < 0.0f && !kernels.empty()) {
        choices.strength = automaticStrength(picture, rules, kernels, noise, choices.alpha, team);
        for (const Kernel* kernel : kernels) {
            choices.share = std::min(choices.share, kernel->trust.share);
        }
    }
    if (rules.layout == PlaneLayout::LuminanceChroma && !kernels.empty()) {
        choices.chroma =
            chromaPriors(picture, rules, *kernels.front(), noise, settings.chromaStrength, team);
    }
    return choices;
}

} // namespace restoration
