#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `ornBlurEstimate`: luminance of the image, estimation of an odd-sided kernel, copy of
/// the wanted part into the host's record. The record's anchors stay as they are.
/// @return VELORN_OK, also for a kernel of no size, whose record is zeroed instead
/// @throws const char* "ornBlurEstimate - kernel_p ==NULL", a text for records that cannot be used,
/// `kNoPixels` for an image without pixels, and whatever the estimator throws; the kernel's data is
/// then as it was
int32_t blurEstimate(ProgressRecord* progress, const PlaneRecord* image, KernelRecord* kernel,
                     float strength);

} // namespace vel
