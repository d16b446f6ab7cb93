#include "restoration/pipeline/RestorationPlan.h"

#include <cstddef>

namespace restoration {

void RestorationPlan::planSecondPasses(std::span<const Kernel* const> kernels) {
    const int colours = loader.picture().colours();
    const bool hasOnePlane = colours == 1 || loader.rules().layout == PlaneLayout::LuminanceChroma;
    if (kernels.empty()) {
        return;
    }
    if (hasOnePlane) {
        secondPasses.emplace_back(*kernels[0], choices.noise.luminance);
        return;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(colours); ++i) {
        secondPasses.emplace_back(*kernels[kernels.size() > 1 ? i : 0], choices.noise.channels[i]);
    }
}

} // namespace restoration
