#pragma once

#include "BlurKernel.h"
#include "RgbPixels.h"

#include <functional>

namespace velorn {

/// The settings of a restoration; velorncore10.h tells what each does to the picture.
struct RestorationSettings {
    bool deconvolve = true;
    float lambda = 0.0f;
    float alpha = 0.0f;
    float limit = 0.0f;
    float edgeRadius = 0.0f;
    float edgeSlope = 0.0f;
    float edgeGain = 0.0f;
    float edgeFloor = 0.0f;
};

/// Told how much is done, as `current` of `limit`; false cancels.
using ProgressFunction = std::function<bool(int current, int limit)>;

/// The library's restoration of `source`, of the same size and depth.
/// An empty result (no samples) says that `progress` cancelled.
/// @throws Failure with the library's reason.
RgbPixels restore(const RgbPixels& source, const BlurKernel& kernel,
                  const RestorationSettings& settings, const ProgressFunction& progress);

} // namespace velorn
