#include "velimproclib/veldeblurcv/detail/DetailCurve.h"

#include "velimproclib/primitives/arithmetic/Lookups.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/arithmetic/Vectors.h"
#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace vel {

namespace {

using Knots = std::array<float, CDetailCurve::kCount>;

/// The power of the curve, or nothing for a straight line.
std::optional<float> powerFor(float gamma) {
    if (gamma > 0.01) {
        return 1.0f / (1.0f + 2.0f * gamma);
    }
    if (gamma < -0.01) {
        return 1.0f - gamma;
    }
    return std::nullopt;
}

/// Replaces every value t by centre*(|t|/centre)^power with the sign of t.
void bend(Knots& values, float centre, float power) {
    Knots amplitudes;
    for (std::size_t i = 0; i < values.size(); ++i) {
        amplitudes[i] = (values[i] >= 0.0f ? values[i] : -values[i]) / centre;
    }
    Knots bent;
    vsPowx(CDetailCurve::kCount, amplitudes.data(), power, bent.data());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = (values[i] >= 0.0f ? centre : -centre) * bent[i];
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
    makeLevels(lower, upper);
    makeValues(gamma, slope, knee);

    plane.m_status = clampBelowInPlaceF32(plane.pixels(), plane.m_step, w, h, lower);
    plane.m_status = clampAboveInPlaceF32(plane.pixels(), plane.m_step, w, h, upper);
    plane.m_status = lutCubicInPlaceF32(plane.pixels(), plane.m_step, w, h, m_values.get(),
                                        m_levels.get(), m_count - 1);
}

void CDetailCurve::makeLevels(float lower, float upper) {
    const float step = (upper - lower) / static_cast<float>(m_count - 1);
    float level = lower;
    for (std::size_t i = 0; i < kCount; ++i) {
        m_levels[i] = level;
        level += step;
    }
}

void CDetailCurve::makeValues(float gamma, float slope, float knee) {
    Knots values;
    std::copy_n(m_levels.get(), kCount, values.begin());
    if (const std::optional<float> power = powerFor(gamma)) {
        bend(values, slope * knee, *power);
    }
    for (std::size_t i = 0; i < kCount; ++i) {
        m_values[i] = values[i] * slope;
    }
}

} // namespace vel
