#pragma once

#include "velimproclib/primitives/filters/Morphology.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// `dilate3x3InPlaceU8` or `erode3x3InPlaceU8`.
using MorphInPlace = decltype(dilate3x3InPlaceU8);

/// Runs `passes` passes of `morph` on `plane` (8-bit, one channel) without its one-pixel frame. The
/// frame keeps its values; a plane without pixels inside the frame stays as it is.
/// @throws std::bad_alloc when memory for the row buffers of a wide plane is exhausted
void morphInside(cv::Mat& plane, std::int32_t passes, MorphInPlace* morph);

} // namespace vel
