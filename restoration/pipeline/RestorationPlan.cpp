#include "restoration/pipeline/RestorationPlan.h"

#include "restoration/pipeline/measureBehindBlur.h"

#include <array>
#include <cstddef>
#include <optional>

namespace restoration {

/// The noise that counts for a second pass is that at the frequencies which it amplifies. The eye
/// sees less of chroma.
void RestorationPlan::planSecondPasses(std::span<const Kernel* const> kernels) {
    if (kernels.empty()) {
        return;
    }
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    const NoiseLevels& levels = choices.noise;
    const std::array<float, 4> noise =
        hasChroma || loader.picture().colours() == 1
            ? std::array{levels.luminance, levels.chromaBlue, levels.chromaRed, 0.0f}
            : levels.channels;
    const std::vector<Patch> patches = noisePatches(loader);
    for (std::size_t i = 0; i < static_cast<std::size_t>(loader.picture().colours()); ++i) {
        const Kernel& kernel = *kernels[kernels.size() > 1 ? i : 0];
        const bool isGiven = settings.noise >= 0.0f && !(hasChroma && i > 0);
        const std::optional<float> found =
            isGiven ? settings.noise : measureBehindBlur(patches, i, kernel);
        secondPasses.emplace_back(kernel, found.value_or(noise[i]),
                                  hasChroma && i > 0 ? SecondPass::Effort::Quick
                                                     : SecondPass::Effort::Full);
    }
}

} // namespace restoration
