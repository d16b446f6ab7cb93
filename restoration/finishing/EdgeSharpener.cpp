#include "restoration/finishing/EdgeSharpener.h"

#include "restoration/finishing/matOf.h"
#include "restoration/threads/SerialOpenMp.h"

#include <algorithm>

namespace restoration {

EdgeSharpener::EdgeSharpener(const EdgeSettings& settings) noexcept
    : m_sharpener(settings.radius, settings.floor) {
    m_sharpener.m_slope = settings.slope;
    m_sharpener.m_gain = settings.gain;
}

void EdgeSharpener::sharpen(const Plane& plane, Plane& sharpened) {
    const SerialOpenMp serial;
    // The sharpener reads the first and last rows of its target; they must not hold another tile.
    std::ranges::fill(sharpened.values(), 0.0f);
    cv::Mat in = matOf(plane);
    cv::Mat out = matOf(sharpened);
    m_sharpener.Proc(in, out);
}

} // namespace restoration
