#pragma once

#include <cstddef>

/// The differences that connect a plane with its gradients, one row at a time.
namespace vel {

/// One row of the transposed differences of the gradients wx, wy:
///
///     adjoint[c] = (wyAbove[c] - wy[c]) + (wx[c-1] - wx[c]).
///
/// The second term is 0 in column 0. With a null `wyAbove`, which marks the first row of the plane,
/// the first term is 0 in all columns. These terms are 0 instead of -wx and -wy because the prior
/// must not see the step across the tile's seam. `count` is at least 1; `adjoint` does not overlap
/// the other rows.
void adjointRow(const float* wx, const float* wyAbove, const float* wy, float* adjoint,
                std::size_t count) noexcept;

} // namespace vel
