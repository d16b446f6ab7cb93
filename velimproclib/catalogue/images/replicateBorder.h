#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>

namespace vel {

/// Fills the margins of the region of interest by repeating the pixels next to them: first whole
/// rows, the `top` rows above row `top` and the `bottom` rows below the last kept row, then in
/// every row, the filled ones included, the `left` and the `right` pixels. Therefore corners repeat
/// the nearest kept corner pixel.
///
/// A margin below 1, or one that leaves no pixel to repeat, counts as no margin. Rows may start at
/// any address. Re-entrant, allocates nothing.
void replicateBorderF32(IMG<float, 1>& img, std::int32_t left, std::int32_t top, std::int32_t right,
                        std::int32_t bottom) noexcept;

/// The same for pixels of three floats.
void replicateBorderF32C3(IMG<float, 3>& img, std::int32_t left, std::int32_t top,
                          std::int32_t right, std::int32_t bottom) noexcept;

} // namespace vel
