#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// How a plane continues beyond its rim: with its pixels in reverse order, beginning with the last
/// one or with the one before it.
enum class Reflection { RepeatsLast, SkipsLast };

/// The weights of a Gaussian at the distances 0, 1, ... up to about 4 `sigma`; both sides together
/// sum to 1.
std::vector<float> gaussianTaps(double sigma);

/// `plane` blurred by `taps` along rows and columns. It continues beyond its rim as `reflection`
/// says. The same bits on every processor.
Plane blurred(const Plane& plane, const std::vector<float>& taps, Reflection reflection,
              const Cancellation& cancellation);

/// sum[x] += factor * row[x]
void addScaledRow(const float* row, float factor, int width, float* sum) noexcept;

} // namespace restoration
