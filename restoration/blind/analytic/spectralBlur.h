#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <optional>

namespace restoration {

/// Finds out-of-focus and straight motion blurs by the zeros that they leave in the power spectrum:
/// on circles at those of J1(2 pi r f), or on lines across the motion in steps of one over its
/// length (Gennery: Determination of optical transfer function by inspection of frequency-domain
/// plot, 1973; Cannon: Blind deconvolution of spatially invariant image blurs with phase, 1976).
/// Does not depend on edges, therefore softly focused pictures and blurs beyond the reach of the
/// search serve as well; but blurs of less than about 4 pixels leave no zeros in the spectrum, and
/// noise may hide them.
///
/// @param picture      luminance, finite
/// @param largestExtent of the kernel, in pixels
/// @returns a disc or a motion; nothing without clear evidence
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::optional<KernelKind> spectralBlur(const Plane& picture, double largestExtent,
                                       const Cancellation& cancellation);

} // namespace restoration
