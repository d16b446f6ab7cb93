#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/library/ProgressAccount.h"
#include "hosts/command/pictures/RgbPixels.h"

namespace velorn {

/// The settings of a restoration, documented in velorncore10.h. The defaults deconvolve and limit
/// overshoot; they neither sharpen edges nor enhance detail. The strength has no default.
struct RestorationSettings {
    bool deconvolve = true;
    float lambda = 0.0f;
    float alpha = 0.5f;
    float limit = 0.5f;
    float edgeRadius = 0.85f;
    float edgeSlope = 0.0f;
    float edgeGain = 1.0f;
    float edgeFloor = 0.005f;
    float detailGain = 0.0f;
    float detailGamma = 0.0f;
};

/// `settings` without edge sharpening and detail enhancement.
RestorationSettings deconvolutionOnly(RestorationSettings settings);

/// Restores `source` with the library. The result has the size and the depth of `source`; it is
/// empty (no samples) when `progress` cancelled. Only one thread at a time may call this.
/// @throws Failure with the library's reason.
RgbPixels restore(const RgbPixels& source, const BlurKernel& kernel,
                  const RestorationSettings& settings, const ProgressFunction& progress);

} // namespace velorn
