#pragma once

namespace restoration {

/// Pixels that a tile needs around the pixels that are kept, so that the result does not depend on
/// where the tile lies: deconvolution carries the ring's content and the edges of the window this
/// far.
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
