#pragma once

#include "velimproclib/tiles/TilePlanes.h"

#include <cstdint>

/// The colour representation in which tiles are sharpened: one luminance plane and two chroma
/// planes, offset so that grey has the values 0.61176 and 0.53725. Both functions work in place on
/// the whole planes, margin included; all three planes have the row step of plane 0. Rows run in
/// parallel.
///
/// The two directions are inverse to about 5e-5 of full scale. A non-zero `useSecondPair` selects
/// a pair of rounded matrices without offsets.
namespace vel {

/// Red, green and blue to luminance, chroma 1 and chroma 2.
void rgbToLumaChroma(TilePlanes& planes, std::uint8_t useSecondPair);

/// Luminance, chroma 1 and chroma 2 to red, green and blue.
void lumaChromaToRgb(TilePlanes& planes, std::uint8_t useSecondPair);

} // namespace vel
