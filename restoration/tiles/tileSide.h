#pragma once

namespace restoration {

inline constexpr int kSmallestTileSide = 128;
inline constexpr int kLargestTileSide = 4096;

/// Chooses the side of the square tiles of a picture, a power of two from 128 to 4096: the one
/// whose tiles cost least together. A picture that fits into one tile with its ring needs
/// no margins there.
/// @param kernelSide the larger side of the kernel, 1..511
/// @param width, height of the picture, at least 1
int tileSideFor(int kernelSide, int width, int height) noexcept;

} // namespace restoration
