#pragma once

#include "restoration/blind/parts/FrequencyCells.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// The edges across which the brightness changes in one direction.
struct EdgeDirection {
    static constexpr std::size_t kBands = frequencies::kBands.size() - 1;

    /// The power lost between the first band and each other, beyond the fall of ideal edges, in
    /// powers of e. Where edges do not stand out from the noise, it is at least this.
    std::array<double, kBands> lost{};
    std::array<bool, kBands> isVisible{}; ///< whether edges stand out from the noise
    double variance = 0.0;                ///< of the Gaussian that loses as much, in square pixels
};

/// How the power of a picture's edges falls with the frequency.
///
/// Squares of 32 by 32 pixels are sorted by their power at middle frequencies. The mean spectrum of
/// the quarter with the least is noise, as strong at all frequencies of a direction as where it is
/// weakest; what the quarter with the most has above it comes from edges. The power spectrum of
/// ideal edges falls as 1/f^3. What is lost beyond that between 0.2 and 0.45 cycles per pixel,
/// relative to the power near 0.125, is measured as the variance of a Gaussian blur, in eight
/// directions.
struct EdgeSpectrum {
    /// The variance in the direction of the strongest blur, in square pixels. Near 0 for sharp
    /// pictures, 0.6 and above for blurred ones; negative for sharpened ones. The wide kernels of
    /// shaken cameras leave accidental power at high frequencies, down to a variance of 0.2.
    double blurVariance = 0.0;
    /// Whether edges stand out from the noise at high frequencies in all directions, and fall with
    /// the frequency as noise would not. Without it a low `blurVariance` means nothing.
    bool showsEdges = false;
    /// Numbered as in eightDirections.h.
    std::array<EdgeDirection, kDirections> directions{};
};

/// Looks at all of `luminance`, white = 1. Pictures with less than 64 columns or rows show no
/// edges. Serial; the result does not depend on the processor.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
EdgeSpectrum edgeSpectrum(const Plane& luminance, const Cancellation& cancellation);

} // namespace restoration
