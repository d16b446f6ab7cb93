#include "restoration/pipeline/RestorationPlan.h"

#include "restoration/pipeline/measureBehindBlur.h"

#include <cstddef>

namespace restoration {

/// The noise that counts for the second pass is that at the frequencies which it amplifies.
void RestorationPlan::planSecondPasses(std::span<const Kernel* const> kernels) {
    if (kernels.empty()) {
        return;
    }
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    const std::size_t planes = hasChroma ? 1 : static_cast<std::size_t>(loader.picture().colours());
    const std::vector<Patch> patches = noisePatches(loader);
    for (std::size_t i = 0; i < planes; ++i) {
        const Kernel& kernel = *kernels[kernels.size() > 1 ? i : 0];
        float noise = planes == 1 ? choices.noise.luminance : choices.noise.channels[i];
        if (settings.noise < 0.0f) {
            noise = measureBehindBlur(patches, i, kernel).value_or(noise);
        }
        secondPasses.emplace_back(kernel, noise);
    }
}

} // namespace restoration
