#pragma once

#include <cstddef>

namespace restoration {

/// first = first^2 + second^2, float by float.
void sumOfSquares(float* first, const float* second, std::size_t count) noexcept;

/// product *= factor, float by float.
void multiplyBy(float* product, const float* factor, std::size_t count) noexcept;

} // namespace restoration
