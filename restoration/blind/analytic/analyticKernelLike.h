#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/blind/squares/SquareKernel.h"

#include <optional>

namespace restoration {

/// A Gaussian, disc or line.
struct AnalyticKernel {
    KernelKind kind;
    SquareKernel kernel;
};

/// The Gaussian, disc or line that is most similar to a kernel found in a picture; nothing when its
/// likeness is below 0.85. The size of a kernel found is about that of the blur, but its outline is
/// softer and its weights are uneven.
std::optional<AnalyticKernel> analyticKernelLike(const SquareKernel& found);

} // namespace restoration
