#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `ornBlurEstimate`: converts the image to luminance, estimates a kernel with odd sides
/// and copies the requested part to the record of the host. The anchors of the record are
/// unchanged. The kernel record is read once, before the first callback.
/// @return VELORN_OK, also for a kernel with a side below 1, which sets the first four fields of
///         the record to 0
/// @throws const char* for unusable records, among them "ornBlurEstimate - kernel_p ==NULL",
///         `kNoPixels` for an image without pixels, and the failures of the estimator. The kernel
///         data is then unchanged.
int32_t blurEstimate(ProgressRecord* progress, const PlaneRecord* image, KernelRecord* kernel,
                     float strength);

} // namespace vel
