#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/library/ProgressAccount.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <optional>

namespace velorn {

/// The largest side of a kernel to find. The memory of the estimate grows with the fourth power of
/// the side and is about 250 MB here.
inline constexpr int kLargestEstimatedSide = 63;

/// Estimates the blur of `pixels` with the library's blind estimate. The sides of `size` are odd
/// and at least 3. `strength` is that of `ornBlurEstimate`: how much the edges are softened that
/// the final kernel is fitted to.
///
/// The estimate cannot be cancelled: it ignores the result of `progress`. It may call `progress` on
/// another thread, one call at a time; `progress` must not throw.
/// @returns the kernel, or nothing when the picture has too few edges for a kernel of this size
/// @throws Failure with the library's reason.
std::optional<BlurKernel> estimateKernel(const RgbPixels& pixels, KernelSize size, float strength,
                                         const ProgressFunction& progress);

} // namespace velorn
