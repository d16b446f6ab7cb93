#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/secondpass/SecondPass.h"

#include <vector>

namespace restoration {

/// What the stages of a tile know about its blur.
struct TileModel {
    std::vector<BlurSpectrum> blurs;      ///< none, one for all planes, or one for each
    std::vector<SecondPass> secondPasses; ///< of the first planes
};

} // namespace restoration
