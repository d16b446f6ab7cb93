#pragma once

#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/tiles/blend.h"

#include <cstddef>

/// The blends that join overlapping tiles, a row at a time. `T` is the element type of the image, 8
/// or 16 bits wide. Plain loops: only overlaps are blended. They are narrow unless the last tile
/// of an axis is pulled back to the end of the image.
namespace vel {

/// Fades a row of a new tile in over its left neighbour's pixels in the strip: `values[x]` becomes
/// the blend of `strip[x * channels]` and itself by `ramp[x]`. Nothing is rounded to `T` here.
template <class T>
void fadeInColumns(float* values, const T* strip, std::size_t channels, const float* ramp,
                   std::size_t count) noexcept {
    for (std::size_t x = 0; x < count; ++x) {
        values[x] = blend(strip[x * channels], static_cast<double>(values[x]), ramp[x]);
    }
}

/// Fades a row of the finished strip in over the target's, by one weight within 0..1, and truncates
/// to `T`. `Sum` is float where the sum is rounded to single precision before it is truncated, and
/// double where it is not: 9 faded to 0 by 1/9 is 8 in the first case and 7 in the second.
template <class Sum, class T>
void fadeInRow(const T* strip, Unaligned<T>* target, float weight, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const auto sum = static_cast<Sum>(blendInDouble(target[i].value, strip[i], weight));
        // The sum is between two values of T: no conversion can leave its range.
        target[i].value = static_cast<T>(static_cast<int>(sum));
    }
}

} // namespace vel
