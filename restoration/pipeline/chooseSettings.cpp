#include "restoration/pipeline/chooseSettings.h"

#include "restoration/noise/measureNoise.h"

#include <algorithm>

namespace restoration {
namespace {

/// The measured noise; the host's value replaces that of the luminance.
NoiseLevels noiseOf(const PictureReader& picture, const VelornRestoreSettings& settings,
                    Team& team) {
    NoiseLevels noise;
    team.run([&] {
        ColourRows rows = colourRows(picture);
        rows.load = [load = std::move(rows.load), &team](int row, int channel, float* target) {
            team.cancellation().check();
            load(row, channel, target);
        };
        noise = measureNoise(rows);
    });
    if (settings.noise >= 0.0f) {
        noise.luminance = settings.noise;
    }
    return noise;
}

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

Choices chooseSettings(const PictureReader& picture, std::span<const Kernel* const> kernels,
                       const VelornRestoreSettings& settings, Team& team) {
    constexpr float kAlpha = 0.5f;
    constexpr float kLimit = 0.5f;
    constexpr float kChromaStrength = 100.0f;
    Choices choices;
    choices.noise = noiseOf(picture, settings, team);
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
