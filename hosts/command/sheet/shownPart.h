#pragma once

#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PictureArea.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/terminal/Interrupt.h"

#include <cstdint>
#include <vector>

namespace velorn {

/// A part of a picture as it is displayed, upright and with 8 bits, without alpha; grey as three
/// equal channels. Each pixel is the mean of `step` by `step` pixels; what does not fill a square
/// at the right and the bottom is left out.
/// @param area inside of the stored picture, at least `step` by `step` pixels
/// @throws Interrupted
RgbPixels shownPart(const ImageFile& picture, const PictureArea& area, int step,
                    const Interrupt& interrupt);

/// The colours of interleaved 8-bit samples with 1 to 4 channels; the second of two and the fourth
/// of four is alpha.
RgbPixels coloursOf(const std::vector<std::uint8_t>& samples, int width, int height, int channels);

} // namespace velorn
