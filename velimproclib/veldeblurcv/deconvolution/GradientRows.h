#pragma once

#include <cstddef>

/// The differences that tie a plane to its gradients, a row at a time.
namespace vel {

/// One row of the transposed differences of the gradients wx, wy:
///
///     adjoint[c] = (wyAbove[c] - wy[c]) + (wx[c-1] - wx[c]).
///
/// The second term is 0 in column 0 and, with a null `wyAbove`, the first one is 0 throughout: the
/// first column and row are cleared rather than given -wx and -wy, as the prior must not see
/// the step across the tile's seam. `count` is at least 1, and `adjoint` lies apart from the
/// others.
void adjointRow(const float* wx, const float* wyAbove, const float* wy, float* adjoint,
                std::size_t count) noexcept;

} // namespace vel
