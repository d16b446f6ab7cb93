#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <optional>

namespace restoration {

/// Finds the blur of a picture in its power spectrum. This needs no edges: it also finds the blur
/// of softly focused pictures, and blurs that are too large for runs.
///
/// Discs and straight motions leave zeros, on circles at those of J1(2 pi r f), or on lines across
/// the motion in steps of one over its length (Gennery: Determination of optical transfer function
/// by inspection of frequency-domain plot, 1973; Cannon: Blind deconvolution of spatially invariant
/// image blurs with phase, 1976). Blurs of less than about 4 pixels have no zeros in the spectrum,
/// and noise may hide them. Gaussians, and discs with hidden zeros, are known by a steep fall in
/// all directions (SpectralFall).
///
/// @param picture      luminance, finite
/// @param largestExtent of the kernel, in pixels
/// @returns a Gaussian, disc or motion; nothing without clear evidence
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::optional<KernelKind> spectralBlur(const Plane& picture, double largestExtent,
                                       const Cancellation& cancellation);

} // namespace restoration
