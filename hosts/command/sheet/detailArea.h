#pragma once

#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PictureArea.h"
#include "hosts/command/terminal/Interrupt.h"

namespace velorn {

/// The rectangle of `width` by `height` pixels, or less where `within` is smaller, in which the
/// stored picture changes most: a part that shows best what a restoration does. Changes below a few
/// levels count as noise.
/// @param within inside of the stored picture
/// @throws Interrupted
PictureArea detailArea(const ImageFile& picture, const PictureArea& within, int width, int height,
                       const Interrupt& interrupt);

} // namespace velorn
