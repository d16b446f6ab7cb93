#pragma once

#include "hosts/command/pixels/Pixels.h"

#include <vector>

namespace velorn {

/// The bytes of a binary PNM file: PGM for grey and PPM for RGB pixels, 8 or 16 bits, without
/// alpha.
std::vector<unsigned char> encodePnm(const Pixels& pixels);

} // namespace velorn
