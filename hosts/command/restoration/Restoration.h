#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <functional>

namespace velorn {

/// The settings of a restoration; velorncore10.h tells what each does to the picture. As
/// constructed they restore, hold fringes back, and neither sharpen edges nor enhance detail; the
/// strength is still to be chosen.
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

/// `settings` without edge sharpening and detail enhancement: what shows of the picture then is
/// what the kernel makes of it.
RestorationSettings deconvolutionOnly(RestorationSettings settings);

/// Told how much is done, as `current` of `limit`; false cancels.
using ProgressFunction = std::function<bool(int current, int limit)>;

/// The library's restoration of `source`, of the same size and depth.
/// An empty result (no samples) says that `progress` cancelled.
/// @throws Failure with the library's reason.
RgbPixels restore(const RgbPixels& source, const BlurKernel& kernel,
                  const RestorationSettings& settings, const ProgressFunction& progress);

} // namespace velorn
