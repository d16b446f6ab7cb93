#include "restoration/clipping/PictureClipping.h"

#include <cstddef>

namespace restoration {

PictureClipping::PictureClipping(const ClippedValues& values,
                                 std::span<const Kernel* const> kernels, std::size_t channels,
                                 const NoiseLevels& noise, const ToneCurves* light)
    : m_white(values.white) {
    for (std::size_t i = 0; i < channels; ++i) {
        ClipLevel level{values.white, values.least, noise.channels[i] / 255.0f};
        if (light != nullptr) {
            const ToneCurve& curve = light->of(i);
            level = {curve.light(values.white), curve.light(values.least),
                     level.noise * curve.slope(values.white)};
        }
        m_detectors.emplace_back(*kernels[kernels.size() > 1 ? i : 0], level);
    }
}

bool PictureClipping::mark(std::span<const Plane> channels, const Rect& part, Mask& known) const {
    std::size_t found = 0;
    for (std::size_t i = 0; i < m_detectors.size(); ++i) {
        found += m_detectors[i].mark(channels[i], part, known);
    }
    return found > 0;
}

} // namespace restoration
