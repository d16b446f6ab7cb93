#include "restoration/pipeline/chooseSettings.h"

#include "restoration/strength/automaticStrength.h"

#include <algorithm>

namespace restoration {
namespace {

float givenOr(float given, float automatic) noexcept {
    return given >= 0.0f ? given : automatic;
}

/// Strengths outside make floats overflow and mean the same as the bounds: nothing of the picture
/// is followed, or all of it.
float boundedStrength(float strength) noexcept {
    return std::clamp(strength, 1e-3f, 1e9f);
}

} // namespace

Choices chooseSettings(const PictureReader& picture, const LoadRules& rules,
                       std::span<const Kernel* const> kernels, const NoiseLevels& noise,
                       const VelornRestoreSettings& settings, Team& team) {
    constexpr float kAlpha = 0.8f;
    constexpr float kLimit = 0.0f;
    constexpr float kChromaStrength = 100.0f;
    Choices choices;
    choices.noise = noise;
    choices.chromaStrength = boundedStrength(givenOr(settings.chromaStrength, kChromaStrength));
    choices.alpha = givenOr(settings.alpha, kAlpha);
    choices.limit = givenOr(settings.limit, kLimit);
    choices.strength = boundedStrength(settings.strength);
    if (settings.strength < 0.0f && !kernels.empty()) {
        choices.strength = automaticStrength(picture, rules, kernels, noise, choices.alpha, team);
    }
    return choices;
}

} // namespace restoration
