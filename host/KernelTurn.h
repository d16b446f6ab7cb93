#pragma once

#include "BlurKernel.h"
#include "Restoration.h"

#include <optional>

namespace velorn {

/// Whether an estimated kernel is turned by 180 degrees: the picture alone does not say which way
/// round an asymmetric blur was.
enum class Turn { No, Yes, Auto };

/// `kernel` turned by 180 degrees.
BlurKernel turnedRound(const BlurKernel& kernel);

/// A kernel, one way round, and what it makes of a picture.
struct KernelTrial {
    BlurKernel kernel;
    /// `unsharpness` of the picture that was restored with it.
    double unsharpness = 0.0;
};

/// Restores `pixels` with `kernel` as it is, turned, or both ways, and gives the way whose result
/// is less unsharp. Nothing when `progress` cancelled.
/// @throws Failure with the library's reason.
std::optional<KernelTrial> tryWaysRound(const RgbPixels& pixels, const BlurKernel& kernel,
                                        Turn turn, const RestorationSettings& settings,
                                        const ProgressFunction& progress);

} // namespace velorn
