#pragma once

#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// `pixels`, stored with the EXIF orientation `orientation` (1..8), arranged as they are displayed.
RgbPixels upright(const RgbPixels& pixels, int orientation);

} // namespace velorn
