#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `PSImage2QImage`: writes a colour image of the host as display pixels, bytes blue,
/// green, red, 255. Sixteen-bit elements are shifted right by 7; values above 255 become 255.
///
/// A scale from 0.99 to 1.01, or NaN, copies the overlap of image and target in one pass and leaves
/// the rest of the target unchanged. Any other scale resamples with linear interpolation and writes
/// the whole target: pixels that the scaled image does not reach are black, and all pixels are
/// black if the scale is not above 0.
///
/// Every pixel is read as three elements, also in a four-channel format. Rows may start at any
/// address; a team of threads shares them. Calls on disjoint buffers may run concurrently.
/// @return VELORN_OK; VELORN_BAD_ARGUMENT, with nothing written, for a format without three
///         colours, a null record, a null target, or null data of an image with pixels;
///         VELORN_DISPLAY_FAILURE if the allocation of the resampling planes fails or their guard
///         rows were overwritten: the target may then be partly written
int32_t displayImage(const PlaneRecord* image, void* dst, int32_t dstStep, int32_t dstWidth,
                     int32_t dstHeight, float scale) noexcept;

} // namespace vel
