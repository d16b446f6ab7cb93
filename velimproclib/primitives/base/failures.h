#pragma once

/// The numbered failures of the core, thrown as `int`. The call frame turns failure n into the
/// status n - 1000.
namespace vel {

/// Two rows of tiles leave a gap.
inline constexpr int kRowGap = 0;
/// Two tiles of a row leave a gap, or the step between tiles is too small to move the walk.
inline constexpr int kColumnGap = 101;
/// An image or a tile has no pixels, or the memory for the pixels of a scratch image is exhausted.
inline constexpr int kNoPixels = 102;
/// The guard row of a scratch image was overwritten.
inline constexpr int kGuardOverwritten = 103;
/// The memory for the workspace of the edge-preserving smoother is exhausted.
inline constexpr int kNoSmootherMemory = 120;

} // namespace vel
