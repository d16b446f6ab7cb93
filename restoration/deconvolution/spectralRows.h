#pragma once

#include <cstddef>

/// Row operations on a column block of a half spectrum: a row is 16 real parts, then the 16
/// imaginary parts (`vel::RealFft2D`). Powers have 16 values for a row. All pointers are aligned to
/// 64 bytes; targets overlap no other array unless they are the same. All processor variants give
/// the same bits.
namespace restoration {

/// product = a b; `product` may be `a` or `b`.
void multiplySpectra(const float* a, const float* b, float* product, std::size_t rows) noexcept;

/// The denominator |K|^2 + weight (|Dx|^2 + |Dy|^2) of some rows.
struct Denominator {
    const float* kernelPower; ///< |K|^2: 16 values for each row
    const float* columnPower; ///< |Dx|^2: 16 values
    const float* rowPower;    ///< |Dy|^2: a value for each row
    float weight;
};

/// x = |K|^2 x / denominator
void reblurRows(const Denominator& denominator, float* x, std::size_t rows) noexcept;

/// y = y / denominator
void divideRows(const Denominator& denominator, float* y, std::size_t rows) noexcept;

/// y = (y + weight (|Dx|^2 + |Dy|^2) mean) / denominator
void divideTowardsMean(const Denominator& denominator, const float* mean, float* y,
                       std::size_t rows) noexcept;

} // namespace restoration
