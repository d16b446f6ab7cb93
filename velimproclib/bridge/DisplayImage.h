#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `PSImage2QImage`: writes a host colour image as display pixels, bytes blue, green, red,
/// 255. Sixteen-bit elements are cut down by a shift of 7, values above 255 become 255.
///
/// A scale from 0.99 to 1.01 (and a not-a-number scale) copies the overlap of image and target in
/// one pass and leaves the rest of the target alone. Any other scale resamples, with linear
/// interpolation, over the whole target: pixels that the scaled image does not reach are black, and
/// so are all of them when the scale is not above 0.
///
/// Pixels are walked by three elements whatever the format: a four-channel format is accepted and
/// read as if it had three. Rows stand at any address and are spread over a team of threads. Calls
/// on disjoint buffers may run at once.
/// @return VELORN_OK; VELORN_BAD_ARGUMENT, with nothing written, for a format without three
/// colours, a null record, a null target, or null data of an image that has pixels;
/// VELORN_DISPLAY_FAILURE when there is no memory for the planes of the resampling or their guard
/// rows were overwritten: the target may then be partly written
int32_t displayImage(const PlaneRecord* image, void* dst, int32_t dstStep, int32_t dstWidth,
                     int32_t dstHeight, float scale) noexcept;

} // namespace vel
