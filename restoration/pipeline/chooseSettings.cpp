#include "restoration/pipeline/chooseSettings.h"

#include <algorithm>

namespace restoration {
namespace {

/// The strength that suits the noise, in levels of 255. Kernels that were found in the picture are
/// not exact enough for high strengths.
float strengthForNoise(float noise, bool isFound) noexcept {
    constexpr float kAtOneLevel = 30000.0f;
    constexpr float kLeast = 500.0f;
    constexpr float kMost = 50000.0f;
    constexpr float kMostForFound = 3000.0f;
    const float strength = std::clamp(kAtOneLevel / (noise * noise), kLeast, kMost);
    return isFound ? std::min(strength, kMostForFound) : strength;
}

float givenOr(float given, float automatic) noexcept {
    return given >= 0.0f ? given : automatic;
}

/// Strengths outside make floats overflow and mean the same as the bounds: nothing of the picture
/// is followed, or all of it.
float boundedStrength(float strength) noexcept {
    return std::clamp(strength, 1e-3f, 1e9f);
}

} // namespace

Choices chooseSettings(const NoiseLevels& noise, std::span<const Kernel* const> kernels,
                       const VelornRestoreSettings& settings) {
    constexpr float kAlpha = 0.5f;
    constexpr float kLimit = 0.5f;
    constexpr float kChromaStrength = 100.0f;
    Choices choices;
    choices.noise = noise;
    const bool isFound =
        std::ranges::any_of(kernels, [](const Kernel* kernel) { return kernel->isFound; });
    choices.strength = boundedStrength(
        givenOr(settings.strength, strengthForNoise(choices.noise.luminance, isFound)));
    choices.chromaStrength = boundedStrength(givenOr(settings.chromaStrength, kChromaStrength));
    choices.alpha = givenOr(settings.alpha, kAlpha);
    choices.limit = givenOr(settings.limit, kLimit);
    return choices;
}

} // namespace restoration
