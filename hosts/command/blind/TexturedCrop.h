#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The part of `pixels` of at most `side` by `side` pixels that has the most texture, cut out.
///
/// Texture is the mean step between neighbouring pixels, each step counted up to a bound: a part
/// with many edges wins over one with a single strong edge.
RgbPixels texturedCrop(const RgbPixels& pixels, int side);

} // namespace velorn
