#pragma once

#include "restoration/chroma/ChromaPrior.h"
#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/threads/Team.h"
#include "restoration/tiles/samplePatches.h"

#include <span>

namespace restoration {

/// Chooses how the chroma planes of a picture are restored: with the weight that has the smallest
/// risk (`ChromaRisk`), summed over the patches and both planes. The noise of a plane is its
/// measured noise, but at least nine tenths of that of luminance.
///
/// Depends on the arguments only, not on the number of threads.
/// @param patches   luminance and chroma, of the side of `blur`
/// @param noise     in the light of the patches
/// @param strength  the inverse of the weight, above 0; negative: chosen
/// @throws Failure for a cancelled call; std::bad_alloc
ChromaPriors chooseChroma(std::span<const Patch> patches, const BlurSpectrum& blur,
                          const NoiseLevels& noise, float strength, Team& team);

} // namespace restoration
