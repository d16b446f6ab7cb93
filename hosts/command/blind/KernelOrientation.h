#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/library/ProgressAccount.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <optional>

namespace velorn {

/// Whether an estimated kernel is rotated by 180 degrees. The picture alone does not show which of
/// the two orientations an asymmetric blur had.
enum class Turn { No, Yes, Auto };

/// Chooses the orientation of `kernel`: as it is, or rotated by 180 degrees. Restores `pixels` with
/// both and keeps the one with the lower `roughness`. The restorations use a low strength, because
/// the errors of an estimated kernel then disturb the comparison less; docs/blind-estimation.md has
/// the figures.
/// @returns the chosen kernel, or nothing when `progress` cancelled
/// @throws Failure with the library's reason.
std::optional<BlurKernel> betterOrientation(const RgbPixels& pixels, const BlurKernel& kernel,
                                            const ProgressFunction& progress);

} // namespace velorn
