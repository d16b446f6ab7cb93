#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/secondpass/SecondPass.h"

#include <vector>

namespace restoration {

/// What the stages of a tile know about its blur.
struct TileModel {
    std::vector<BlurSpectrum> blurs;      ///< none, one for all planes, or one for each
    std::vector<SecondPass> secondPasses; ///< of the first planes
    /// The share of the restoration in the result; the rest is the picture itself.
    float share = 1.0f;
};

} // namespace restoration
