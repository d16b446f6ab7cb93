#pragma once

#include "restoration/secondpass/DctVariances.h"
#include "restoration/secondpass/PhasedLine.h"

#include <array>
#include <cstddef>

/// The steps that filter one row of 8x8 blocks. `lines` are the eight vertical frequencies, one
/// line each. Coefficients are 8 times the orthonormal ones, and the sums of a row hold 64 times
/// the weighted pixels. All processor variants give the same bits.
namespace restoration {

/// Which coefficients the shrinkage keeps. The noise of a block with the mean m has `base + slope
/// m` times these variances.
struct HardLimits {
    std::array<float, 64> limits; ///< greater magnitudes are kept; scaled as the coefficients
    DctVariances variances;
    float base;
    float slope;
};

/// The vertical transforms of eight rows, which hold their phases without gaps.
void forwardVertical(const float* const* rows, const PhasedLine& line, float* lines) noexcept;

/// Shrinks the blocks of a row and adds them, times their weights, to the eight lines `sums`, and
/// the weights to the line `weights`. The first block begins in column `firstColumn`, less than the
/// step.
void shrinkBlocks(const float* lines, const PhasedLine& line, std::size_t firstColumn,
                  const HardLimits& limits, float* sums, float* weights) noexcept;

/// Adds the inverse vertical transforms of `lines` to the eight rows `sums`, and `weightLine` to
/// the eight rows `weights`.
void addInverseVertical(const float* lines, const float* weightLine, const PhasedLine& line,
                        float* const* sums, float* const* weights) noexcept;

/// sum = sum / (64 weights)
void divideByWeights(const float* weights, float* sum, std::size_t count) noexcept;

} // namespace restoration
