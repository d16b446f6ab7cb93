#pragma once

#include <array>

namespace restoration {

/// Variances of the noise in the coefficients of the orthonormal 8x8 cosine transform, row by row
/// from the lowest vertical frequency.
using DctVariances = std::array<float, 64>;

} // namespace restoration
