#pragma once

#include "restoration/pipeline/Choices.h"
#include "restoration/pipeline/PictureBlur.h"
#include "restoration/pipeline/TileModel.h"
#include "restoration/secondpass/SecondPass.h"
#include "restoration/tiles/samplePatches.h"
#include "restoration/tiles/TileGrid.h"
#include "restoration/tiles/TileLoader.h"
#include "velorn.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace restoration {

/// Everything that is decided before the first tile. Constant, shared by all threads.
struct RestorationPlan {
    /// @throws std::bad_alloc
    RestorationPlan(const TileLoader& tileLoader, const PictureBlur& pictureBlur,
                    const Choices& chosen, const VelornRestoreSettings& hostSettings);

    bool isDeconvolved() const noexcept { return !blur.kernels().empty(); }
    /// The model of a tile of a blur that differs from place to place; empty where the picture is
    /// sharp. Any thread may call it.
    /// @throws std::bad_alloc
    TileModel localModel(const PlannedTile& tile) const;

    TileLoader loader;
    PictureBlur blur;
    Choices choices;
    VelornRestoreSettings settings;
    TileModel model; ///< of all tiles; empty where the blur differs from place to place

private:
    void measureNoises();
    SecondPass::Noise noiseOf(std::size_t i, const std::vector<Patch>& patches,
                              const Kernel& kernel) const;
    std::optional<float> measuredNoise(std::size_t i, const std::vector<Patch>& patches,
                                       const Kernel& kernel) const;
    TileModel modelOf(std::span<const Kernel* const> kernels) const;

    std::vector<SecondPass::Noise> m_noises; ///< of the planes with a second pass
};

} // namespace restoration
