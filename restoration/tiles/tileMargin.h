#pragma once

namespace restoration {

/// Pixels that a tile needs around the pixels that are kept: deconvolution carries errors from the
/// seam of the tile into the window.
///
/// No margin removes them all, because weak regularisation rings far: what matters is how much
/// they add to the error of the restoration itself. With tiles of 512 and tapered seams this margin
/// costs 0.00 dB for a disc of 5, 0.02 dB for a disc of 10 and 0.07 dB for motion of 15 (noise 1,
/// strength 8000, against one tile for the whole picture), a tenth of that at noise 3. Twice the
/// kernel would save half of it.
/// @param kernelSide the larger side of the kernel, at least 1
constexpr int tileMargin(int kernelSide) noexcept {
    constexpr int kReachOfSmallKernels = 16;
    return kernelSide + kReachOfSmallKernels;
}

/// Columns (and rows) of a tile that join opposite edges of its window.
constexpr int tileRing(int kernelSide) noexcept {
    return kernelSide - 1;
}

/// The side of the square of pixels that a tile inside a picture restores; below 1 when the tile is
/// too small for the kernel.
constexpr int usefulSide(int tileSide, int kernelSide) noexcept {
    return tileSide - tileRing(kernelSide) - 2 * tileMargin(kernelSide);
}

} // namespace restoration
