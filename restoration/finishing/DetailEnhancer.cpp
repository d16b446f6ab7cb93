#include "restoration/finishing/DetailEnhancer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace restoration {
namespace {

constexpr float kKnee = 0.18f;
constexpr float kLowestDetail = -0.5f;
constexpr float kHighestDetail = 0.5f;
constexpr float kBoost = 3.0f;

vel::GIMG<float> imageOf(Plane& plane) {
    const auto step = static_cast<std::int32_t>(sizeof(float)) * plane.width();
    return {plane.width(), plane.height(), plane.row(0), step};
}

} // namespace

void DetailEnhancer::enhance(Plane& plane, const Cancellation& cancellation) {
    if (m_detail.width() != plane.width() || m_detail.height() != plane.height()) {
        m_detail = Plane(plane.width(), plane.height());
    }
    float* values = plane.values().data();
    float* detail = m_detail.values().data();
    const std::size_t count = plane.values().size();
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = std::clamp(values[i], 0.0f, 1.0f); // a NaN stays
        detail[i] = values[i];
    }
    m_smoother.smooth(plane, cancellation);
    for (std::size_t i = 0; i < count; ++i) {
        detail[i] = detail[i] - values[i];
    }
    vel::GIMG<float> image = imageOf(m_detail);
    m_curve.apply(image, m_settings.gamma, m_settings.gain, kKnee, kLowestDetail, kHighestDetail,
                  kBoost);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = values[i] + detail[i];
    }
}

} // namespace restoration
