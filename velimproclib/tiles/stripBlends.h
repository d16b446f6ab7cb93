#pragma once

#include "velimproclib/primitives/rows.h"
#include "velimproclib/tiles/blend.h"

#include <cstddef>

/// The blends by which overlapping tiles become one image. `T` is the image's element type, 8 or 16
/// bits wide. Plain loops: overlaps are a few columns or rows of a tile.
namespace vel {

/// Fades a row of a new tile in over what its left neighbour left in the strip: `values[x]` becomes
/// the blend of `strip[x * channels]` and itself by `ramp[x]`. Nothing is rounded to `T` here.
template <class T>
void fadeInColumns(float* values, const T* strip, std::size_t channels, const float* ramp,
                   std::size_t count) noexcept {
    for (std::size_t x = 0; x < count; ++x) {
        values[x] = blend(strip[x * channels], static_cast<double>(values[x]), ramp[x]);
    }
}

/// Fades a row of the finished strip in over the target's, by one weight within 0..1, truncating to
/// `T`. `target` may stand at any address.
template <class T>
void fadeInRow(const T* strip, T* target, float weight, std::size_t count) noexcept {
    Unaligned<T>* row = unaligned(target);
    for (std::size_t i = 0; i < count; ++i) {
        // Between two values of T, so no conversion can leave its range.
        row[i].value = static_cast<T>(static_cast<int>(blend(row[i].value, strip[i], weight)));
    }
}

} // namespace vel
