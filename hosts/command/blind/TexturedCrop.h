#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The part of `pixels` with the most texture, at most `side` by `side` pixels.
///
/// Texture is the sum of the differences between neighbouring pixels, each limited to an upper
/// bound: a part with many edges wins over one with a single strong edge.
RgbPixels texturedCrop(const RgbPixels& pixels, int side);

} // namespace velorn
