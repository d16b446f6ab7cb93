#include "restoration/finishing/DetailEnhancer.h"

#include "restoration/work/SerialOpenMp.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace restoration {
namespace {

constexpr float kSmoothing = 0.05f;
constexpr float kSmoothingExponent = 1.0f;
constexpr bool kLogGuide = true;
constexpr int kIterations = 20;
constexpr float kKnee = 0.18f;
constexpr float kLowestDetail = -0.5f;
constexpr float kHighestDetail = 0.5f;
constexpr float kBoost = 3.0f;

vel::GIMG<float> imageOf(Plane& plane) {
    const auto step = static_cast<std::int32_t>(sizeof(float)) * plane.width();
    return {plane.width(), plane.height(), plane.row(0), step};
}

void fit(Plane& scratch, const Plane& plane) {
    if (scratch.width() != plane.width() || scratch.height() != plane.height()) {
        scratch = Plane(plane.width(), plane.height());
    }
}

} // namespace

void DetailEnhancer::enhance(Plane& plane) {
    fit(m_input, plane);
    fit(m_guide, plane);
    std::ranges::copy(plane.values(), m_input.values().begin());
    std::ranges::copy(plane.values(), m_guide.values().begin());
    const SerialOpenMp serial;
    vel::GIMG<float> base = imageOf(plane);
    vel::GIMG<float> detail = imageOf(m_input);
    vel::GIMG<float> guide = imageOf(m_guide);
    try {
        m_smoother.smooth(detail, base, guide, kSmoothing, kSmoothingExponent, kLogGuide,
                          kIterations);
    } catch (const int) {
        throw std::bad_alloc(); // the core reports it by number
    }
    for (std::size_t i = 0; i < plane.values().size(); ++i) {
        m_input.values()[i] -= plane.values()[i];
    }
    m_curve.apply(detail, m_settings.gamma, m_settings.gain, kKnee, kLowestDetail, kHighestDetail,
                  kBoost);
    for (std::size_t i = 0; i < plane.values().size(); ++i) {
        plane.values()[i] += m_input.values()[i];
    }
}

} // namespace restoration
