#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/strength/Fit.h"
#include "restoration/threads/Team.h"
#include "restoration/tiles/samplePatches.h"

#include <cstddef>
#include <span>

namespace restoration {

/// A plane of the patches that is restored with the strength to choose.
struct StrengthPlane {
    std::size_t index;        ///< in Tile::planes
    const BlurSpectrum* blur; ///< for tiles of the side of the patches
    AssumedNoise noise;
};

/// What `chooseStrength` may choose from.
struct StrengthRange {
    float strongest; ///< the first strength of the search; there is no stronger one
    float alpha;     ///< exponent of the gradient prior
};

/// Chooses the strength with the least estimated error of the restored patches (`riskOf`), one for
/// all planes: the luminance, or the channels of a picture without chroma. The result is at most
/// `range.strongest` and at least a thousandth of it. Errors in detail that the blur removes
/// entirely cannot be seen and do not count.
///
/// Planes and patches are measured in parallel, their sums added in order: the result does not
/// depend on the number of threads. Patches without known pixels give `range.strongest`.
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
float chooseStrength(std::span<const Patch> patches, std::span<const StrengthPlane> planes,
                     const StrengthRange& range, Team& team);

} // namespace restoration
