#pragma once

#include <cstdint>

namespace vel {

/// Returns `n` if it is a multiple of 16, otherwise `(n / 16 + 1) * 16` with truncating division.
/// That is the next multiple above for a positive `n` and the second next for a negative one: -5
/// gives 16, -20 gives 0. `n` must not exceed 2147483632; a larger one gives the lowest integer.
constexpr std::int32_t roundUp16(std::int32_t n) noexcept {
    if (n % 16 == 0) {
        return n;
    }
    return static_cast<std::int32_t>((std::int64_t{n} / 16 + 1) * 16);
}

} // namespace vel
