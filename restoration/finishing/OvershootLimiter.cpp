#include "restoration/finishing/OvershootLimiter.h"

#include "restoration/finishing/matOf.h"
#include "restoration/threads/SerialOpenMp.h"
#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>

namespace restoration {

OvershootLimiter::OvershootLimiter(float strength, int kernelSide) noexcept {
    const double share = strength;
    const double upper = (1.0 - share) * 3.0 + 1.0;
    m_limit.m_innerPasses = 1;
    m_limit.m_radius = std::clamp(vel::truncateToInt((kernelSide + 0.8) / 3.0), 1, 5);
    m_limit.m_upper = vel::toFloat(upper);
    m_limit.m_lower = vel::toFloat(1.0 / upper);
    m_limit.m_mix = share < 0.1 ? 1.0f : vel::toFloat(1.0 - share);
}

void OvershootLimiter::limit(const Plane& blurred, const Plane& deblurred, Plane& limited) {
    const SerialOpenMp serial;
    cv::Mat out = matOf(limited);
    m_limit.m_imSize = out.size();
    m_limit.Proc(matOf(blurred), matOf(deblurred), out);
}

} // namespace restoration
