#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/restoration/Restoration.h"

#include <optional>

namespace velorn {

/// Whether an estimated kernel is turned by 180 degrees: the picture alone does not say which way
/// round an asymmetric blur was.
enum class Turn { No, Yes, Auto };

/// `kernel` turned by 180 degrees.
BlurKernel turnedRound(const BlurKernel& kernel);

/// `kernel` as it is, or turned: the way round whose restoration of `pixels` is less rough
/// (`roughness`). Both are restored calmly: what is wrong with a kernel that was found in a picture
/// then drowns less of what tells the ways apart; docs/blind-estimation.md has the figures. Nothing
/// when `progress` cancelled.
/// @throws Failure with the library's reason.
std::optional<BlurKernel> betterWayRound(const RgbPixels& pixels, const BlurKernel& kernel,
                                         const ProgressFunction& progress);

} // namespace velorn
