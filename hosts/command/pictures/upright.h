#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// `pixels`, stored as EXIF's `orientation` (1..8) says, the way round that they are looked at.
RgbPixels upright(const RgbPixels& pixels, int orientation);

} // namespace velorn
