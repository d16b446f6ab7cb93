#pragma once

#include "restoration/tiles/samplePatches.h"

namespace restoration {

/// The patches that `chooseStrength` looks at.
struct StrengthPatches {
    int side = 0; ///< of the tiles
    PatchRules rules;
};

/// Patches that represent a picture of `width` by `height` pixels for a kernel whose larger side is
/// `kernelSide`. Their restorations for one search take less time than that of the picture, and no
/// longer for large pictures than for those of ten megapixels.
StrengthPatches strengthPatches(int kernelSide, int width, int height) noexcept;

} // namespace restoration
