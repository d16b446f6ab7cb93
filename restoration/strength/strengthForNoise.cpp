#include "restoration/strength/strengthForNoise.h"

#include <algorithm>

namespace restoration {
namespace {

/// Linear between the measured scales of 0, 0.5 and 1.
float scaleOf(float alpha) noexcept {
    constexpr float kAtZero = 2.8f;
    constexpr float kAtOne = 0.3f;
    const float distance = 2.0f * alpha - 1.0f; // from 0.5, in halves
    return 1.0f + distance * (distance < 0.0f ? 1.0f - kAtZero : kAtOne - 1.0f);
}

} // namespace

float strengthForNoise(float noise, float alpha) noexcept {
    constexpr float kAtOneLevel = 30000.0f;
    constexpr float kLeast = 500.0f;
    constexpr float kMost = 50000.0f;
    return scaleOf(alpha) * std::clamp(kAtOneLevel / (noise * noise), kLeast, kMost);
}

} // namespace restoration
