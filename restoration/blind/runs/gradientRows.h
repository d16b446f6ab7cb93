#pragma once

namespace restoration {

/// The gradients of one row of a plane whose right neighbours are cyclic, where they are kept.
///
/// right[x] = row[x + 1] - row[x] and down[x] = below[x] - row[x]; both are 0 where
/// right^2 + down^2 < threshold. The same bits on every processor.
/// @param width at least 1
void keptGradientRow(const float* row, const float* below, int width, float threshold, float* right,
                     float* down) noexcept;

/// The adjoint of the cyclic forward differences, one row:
/// divergence[x] = right[x - 1] - right[x] + downAbove[x] - down[x].
void divergenceRow(const float* right, const float* down, const float* downAbove, int width,
                   float* divergence) noexcept;

} // namespace restoration
