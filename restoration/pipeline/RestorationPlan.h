#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/pipeline/Choices.h"
#include "restoration/secondpass/SecondPass.h"
#include "restoration/tiles/samplePatches.h"
#include "restoration/tiles/TileLoader.h"
#include "velorn.h"

#include <algorithm>
#include <span>
#include <vector>

namespace restoration {

/// Everything that is decided before the first tile. Constant, shared by all threads.
struct RestorationPlan {
    /// @throws std::bad_alloc
    RestorationPlan(const TileLoader& tileLoader, std::span<const Kernel* const> kernels,
                    const Choices& chosen, const VelornRestoreSettings& hostSettings)
        : loader(tileLoader), choices(chosen), settings(hostSettings) {
        for (const Kernel* kernel : kernels) {
            blurs.emplace_back(*kernel, tileLoader.side());
            kernelSide = std::max(kernelSide, kernel->largerSide());
        }
        if (settings.quality != VELORN_QUALITY_FAST) {
            planSecondPasses(kernels);
        }
    }

    TileLoader loader;
    std::vector<BlurSpectrum> blurs;      ///< none, one for all planes, or one for each
    std::vector<SecondPass> secondPasses; ///< of the first planes
    int kernelSide = 1;                   ///< the larger side of the largest kernel
    Choices choices;
    VelornRestoreSettings settings;

private:
    void planSecondPasses(std::span<const Kernel* const> kernels);
    SecondPass::Noise noiseOf(std::size_t i, const std::vector<Patch>& patches,
                              const Kernel& kernel) const;
};

} // namespace restoration
