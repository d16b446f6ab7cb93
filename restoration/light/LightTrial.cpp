#include "restoration/light/LightTrial.h"

#include "restoration/deconvolution/blurPlane.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/deconvolution/taperEdges.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

constexpr float kExponent = 0.5f;

void copy(const Plane& from, Plane& to) {
    std::ranges::copy(from.values(), to.values().begin());
}

/// The root of an absolute difference of stored values.
double rootOfStep(float a, float b) noexcept {
    const float step = std::clamp(a, 0.0f, 1.0f) - std::clamp(b, 0.0f, 1.0f);
    return static_cast<double>(std::sqrt(std::abs(step)));
}

} // namespace

void LightTrial::prepare(const Plane& display, TrialScratch& scratch,
                         const Cancellation& cancellation) {
    if (m_prepared.isEmpty()) {
        m_prepared = Plane(display.width(), display.height());
    }
    copy(display, m_prepared);
    if (m_curve != nullptr) {
        m_curve->toLight(m_prepared.values());
    }
    if (m_patch.isIncomplete) {
        estimateUnknown(m_prepared, m_patch.known, m_blur, scratch.tile, cancellation);
    } else {
        taperEdges(m_prepared, m_patch.width, m_patch.height, m_blur, scratch.tile, cancellation);
    }
}

Explanation LightTrial::explain(const Plane& display, float strength, TrialScratch& scratch,
                                const Cancellation& cancellation) const {
    copy(m_prepared, scratch.blurred);
    deconvolveHyperLaplacian(scratch.blurred, m_patch.isIncomplete ? &m_patch.known : nullptr,
                             m_blur, {strength, kExponent}, scratch.restored, scratch.tile,
                             cancellation);
    blurPlane(scratch.restored, m_blur, scratch.again, scratch.tile, cancellation);
    if (m_curve != nullptr) {
        m_curve->toDisplay(scratch.restored.values());
        m_curve->toDisplay(scratch.again.values());
    }
    return sums(display, scratch);
}

Explanation LightTrial::sums(const Plane& display, const TrialScratch& scratch) const {
    Explanation sums;
    const int last = display.width() - 1;
    for (int y = 0; y < last; ++y) {
        const std::uint8_t* counted = m_patch.counted.row(y);
        const std::uint8_t* countedBelow = m_patch.counted.row(y + 1);
        const float* row = scratch.restored.row(y);
        const float* below = scratch.restored.row(y + 1);
        for (int x = 0; x < last; ++x) {
            if (counted[x] == 0 || counted[x + 1] == 0 || countedBelow[x] == 0) {
                continue;
            }
            const auto error = static_cast<double>(display.row(y)[x] - scratch.again.row(y)[x]);
            sums.residual += error * error;
            sums.gradients += rootOfStep(row[x + 1], row[x]) + rootOfStep(below[x], row[x]);
            ++sums.pixels;
        }
    }
    return sums;
}

} // namespace restoration
