#pragma once

#include "hosts/command/pixels/Pixels.h"

#include <span>
#include <vector>

namespace velorn {

// OpenEXR and HDR files hold samples proportional to light. The restoration takes them on the curve
// of sRGB (IEC 61966-2-1), like those of other files.

/// Codes linear light in 0..1 with the curve of sRGB, rounded to 16 bits. Alpha, the last of an
/// even number of channels, is linear; the colours of a file with associated alpha are divided by
/// it.
/// @throws Failure if a sample is outside 0..1 or not a number.
Pixels fromLinearLight(std::span<const float> samples, const PictureShape& shape);

/// The inverse: linear light, with the colours multiplied by alpha.
std::vector<float> toLinearLight(const Pixels& pixels);

/// Samples in 0..1 rounded to 16 bits, without a curve.
/// @throws Failure if a sample is outside 0..1 or not a number.
std::vector<std::uint16_t> toSixteenBits(std::span<const float> samples);

/// Divides colours by alpha, in place, for files that hold their products. Pixels whose alpha is 0
/// stay as they are.
void unassociateAlpha(Pixels& pixels);

} // namespace velorn
