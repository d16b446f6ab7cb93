#pragma once

#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/pixels/Pixels.h"

namespace velorn {

/// `pixels`, stored with the EXIF orientation `orientation` (1..8), arranged as they are displayed.
Pixels upright(Pixels pixels, int orientation);
RgbPixels upright(const RgbPixels& pixels, int orientation);

} // namespace velorn
