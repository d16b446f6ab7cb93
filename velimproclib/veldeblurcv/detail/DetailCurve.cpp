#include "velimproclib/veldeblurcv/detail/DetailCurve.h"

#include "velimproclib/primitives/arithmetic/Lookups.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/arithmetic/Vectors.h"
#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <optional>

namespace vel {

namespace {

using Knots = std::array<float, CDetailCurve::kCount>;

Knots evenLevels(float lower, float upper) {
    const float step = (upper - lower) / static_cast<float>(CDetailCurve::kCount - 1);
    Knots levels;
    float level = lower;
    for (float& knot : levels) {
        knot = level;
        level += step;
    }
    return levels;
}

std::optional<float> powerFor(float gamma) {
    if (gamma > 0.01) {
        return 1.0f / (1.0f + 2.0f * gamma);
    }
    if (gamma < -0.01) {
        return 1.0f - gamma;
    }
    return std::nullopt;
}

/// centre*(|t|/centre)^power with the sign of t
Knots bend(const Knots& levels, float centre, float power) {
    Knots amplitudes;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        amplitudes[i] = (levels[i] >= 0.0f ? levels[i] : -levels[i]) / centre;
    }
    Knots bent;
    vsPowx(CDetailCurve::kCount, amplitudes.data(), power, bent.data());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        bent[i] = (levels[i] >= 0.0f ? centre : -centre) * bent[i];
    }
    return bent;
}

/// Other threads may be writing the same numbers at the same time.
void publish(const Knots& knots, float* shared) {
    for (std::size_t i = 0; i < knots.size(); ++i) {
        std::atomic_ref<float>(shared[i]).store(knots[i], std::memory_order_relaxed);
    }
}

} // namespace

CDetailCurve::CDetailCurve()
    : m_values(std::make_unique<float[]>(kCount)), m_levels(std::make_unique<float[]>(kCount)) {}

void CDetailCurve::apply(GIMG<float>& plane, float gamma, float gain, float knee, float lower,
                         float upper, float boost) {
    const std::int32_t w = plane.m_roiW;
    const std::int32_t h = plane.m_roiH;
    if (gain < -0.99) {
        plane.m_status = setPlaneF32(0.0f, plane.pixels(), plane.m_step, w, h);
        return;
    }
    if (-0.001 < gamma && gamma < 0.001 && -0.001 < gain && gain < 0.001) {
        return;
    }
    const float slope = gain > 0.0f ? 1.0f + boost * gain : 1.0f + gain;
    const Knots levels = evenLevels(lower, upper);
    const std::optional<float> power = powerFor(gamma);
    Knots values = power ? bend(levels, slope * knee, *power) : levels;
    for (float& value : values) {
        value *= slope;
    }
    publish(levels, m_levels.get());
    publish(values, m_values.get());

    plane.m_status = clampBelowInPlaceF32(plane.pixels(), plane.m_step, w, h, lower);
    plane.m_status = clampAboveInPlaceF32(plane.pixels(), plane.m_step, w, h, upper);
    plane.m_status = lutCubicInPlaceF32(plane.pixels(), plane.m_step, w, h, values.data(),
                                        levels.data(), kCount - 1);
}

} // namespace vel
