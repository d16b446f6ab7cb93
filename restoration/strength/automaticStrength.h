#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/threads/Team.h"
#include "restoration/tiles/TileLoader.h"

#include <span>

namespace restoration {

/// Chooses the strength of the deconvolution from a sample of the picture: for the luminance, or
/// one strength for all channels of a picture without chroma. The strength that suits the noise
/// (`strengthForNoise`) is the highest one considered, unless the kernels deserve less trust.
/// @param kernels  one for all planes, or one for each channel
/// @param noise    of the planes as the loader gives them
/// @param alpha    exponent of the gradient prior
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
float automaticStrength(const PictureReader& picture, const LoadRules& rules,
                        std::span<const Kernel* const> kernels, const NoiseLevels& noise,
                        float alpha, Team& team);

} // namespace restoration
