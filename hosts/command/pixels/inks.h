#pragma once

#include "hosts/command/pixels/Pixels.h"

#include <span>

namespace velorn {

/// Inks of a CMYK picture, four samples for each pixel, 0 for no ink, converted to sRGB: relative
/// colorimetric with black point compensation, by Little CMS.
/// @param profile the ICC profile of the inks
/// @throws Failure if the profile is not one of CMYK inks.
Pixels rgbOfInks(const Samples& inks, int width, int height,
                 std::span<const unsigned char> profile);

} // namespace velorn
