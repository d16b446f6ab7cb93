#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <string>

namespace velorn {

/// The range of a blur's extent, in pixels, for help texts.
std::string extentRange(AnalyticBlur::Shape shape);

/// The range of the angle of a motion, in degrees, for help texts.
std::string angleRange();

/// The blur that numbers of the command line describe. `angle` counts only for motions.
/// @throws UsageFailure that names `option` when a number is out of range.
AnalyticBlur blurOf(AnalyticBlur::Shape shape, float extent, float angle,
                    const std::string& option);

} // namespace velorn
